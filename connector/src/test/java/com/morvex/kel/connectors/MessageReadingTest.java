package com.morvex.kel.connectors;

import static org.junit.Assert.assertArrayEquals;
import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertNull;
import static org.junit.Assert.assertTrue;

import java.io.IOException;
import java.io.ObjectInputFilter;
import java.io.ObjectInputStream;
import java.io.Serializable;
import java.math.BigDecimal;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.sql.Timestamp;
import java.time.Instant;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Date;
import java.util.List;
import javax.jms.BytesMessage;
import javax.jms.Session;
import javax.jms.StreamMessage;
import org.junit.After;
import org.junit.AfterClass;
import org.junit.BeforeClass;
import org.junit.Test;

/** What becomes of each kind of message, and which are refused with what sentence. */
public class MessageReadingTest {
    private static final String VALUES = "maxdepth=10;java.lang.Object;java.lang.String;java.lang.Number;"
            + "java.lang.Byte;java.lang.Short;java.lang.Integer;java.lang.Long;java.lang.Float;java.lang.Double;"
            + "java.lang.Boolean;java.lang.Character;java.math.BigDecimal;java.math.BigInteger;java.util.Date;"
            + "java.sql.Timestamp;java.util.ArrayList;java.util.Arrays$ArrayList;java.util.CollSer;"
            + "java.util.ImmutableCollections$List12;java.util.ImmutableCollections$ListN;!*";
    private static Path attacked;
    private static String unfiltered;
    private static TestBroker broker;
    private static JmsConnector connector;

    /** Leaves a trace when it is brought to life. */
    private static final class Attack implements Serializable {
        private static final long serialVersionUID = 1L;
        private final String file = attacked.toString();

        private void readObject(ObjectInputStream in) throws IOException, ClassNotFoundException {
            in.defaultReadObject();
            Files.createFile(Path.of(file));
        }
    }

    @BeforeClass
    public static void start() throws Exception {
        System.setProperty("kel.jms.maxMessageBytes", "1000");
        attacked = Files.createTempDirectory("kel-attack").resolve("written");
        broker = new TestBroker();
        // The provider itself trusts everything here, so that only the connector and the filter stand guard.
        connector = broker.connector(
                broker.url() + "?jms.trustAllPackages=true", "QUEUE", "kinds", false, "", "");
        assertTrue(LogCapture.lines(), connector.connectForInput(true));
        send(session -> session.createObjectMessage(new String[] {"a"}));
        assertNull(connector.receiveObjectArrayMessage(false));
        unfiltered = LogCapture.lines();
        ObjectInputFilter.Config.setSerialFilter(
                ObjectInputFilter.Config.createFilter(VALUES));   // only once a JVM
    }

    @AfterClass
    public static void stop() throws Exception {
        System.clearProperty("kel.jms.maxMessageBytes");
        broker.close();
        Files.deleteIfExists(attacked);
        Files.delete(attacked.getParent());
    }

    @After
    public void nothingIsLeft() {
        assertEquals("", connector.receiveTextMessage());
    }

    private static void send(TestBroker.Maker maker) throws Exception {
        LogCapture.clear();
        broker.send(TestBroker.queueNamed("kinds"), maker);
    }

    private static TestBroker.Maker bytes(byte... content) {
        return session -> {
            BytesMessage message = session.createBytesMessage();
            message.writeBytes(content);
            return message;
        };
    }

    private static TestBroker.Maker stream(Object... values) {
        return session -> {
            StreamMessage message = session.createStreamMessage();
            for (Object value : values) message.writeObject(value);
            return message;
        };
    }

    private static TestBroker.Maker object(Serializable body) {
        return session -> session.createObjectMessage(body);
    }

    private static void checkRefused(String reason, Object result) {
        assertNull(reason, result);
        String log = LogCapture.lines();
        assertTrue(log, log.startsWith("The message ID:") && log.contains(reason) && !log.contains("\n"));
    }

    @Test
    public void textsAreTakenAndEverythingElseIsRefused() throws Exception {
        String text = "Trades,i,\u00e9\u20ac\ud83d\ude00\u0000,1";
        for (TestBroker.Maker maker : List.<TestBroker.Maker>of(session
                     -> session.createTextMessage(text),
                     bytes(text.getBytes(StandardCharsets.UTF_8)),
                     session
                     -> session.createTextMessage("x".repeat(1000)),
                     session -> session.createTextMessage("\u20ac".repeat(333)), bytes(new byte[1000]))) {
            send(maker);
            String got = connector.receiveTextMessage();
            assertTrue(got, text.equals(got) || got.length() == 1000 || got.length() == 333);
        }
        Object[][] refused = {
                {"body is empty", (TestBroker.Maker) session -> session.createTextMessage("")},
                {"body is empty", (TestBroker.Maker) Session::createTextMessage},
                {"body is empty", bytes()},
                {"a message without a body", (TestBroker.Maker) Session::createMessage},
                {"a MapMessage", (TestBroker.Maker) Session::createMapMessage},
                {"a StreamMessage", stream("a")},
                {"an ObjectMessage", object("a")},
                {"not UTF-8", bytes((byte) 'a', (byte) 0xc3)},
                {"not UTF-8", bytes((byte) 0xed, (byte) 0xa0, (byte) 0x80)},
                {"has 1001 bytes", bytes(new byte[1001])},
                {"has 1002 bytes",
                        (TestBroker.Maker) session -> session.createTextMessage("\u20ac".repeat(334))},
        };
        for (Object[] row : refused) {
            send((TestBroker.Maker) row[1]);
            checkRefused((String) row[0], connector.receiveTextMessage());
        }
    }

    @Test
    public void arraysBecomeTexts() throws Exception {
        Object[] values = {"a", null, 'c', (byte) 1, (short) 2, 3, 4L, 5.5f, 6.25, true,
                new BigDecimal("1E+3"), new Date(1577934245250L), new Date(-500),
                Timestamp.from(Instant.parse("2020-01-02T03:04:05.123456Z"))};
        String[] texts = {"a", null, "c", "1", "2", "3", "4", "5.5", "6.25", "true", "1000", "1577934245.250",
                "-1.500", "1577934245.123456"};
        send(object(values));
        assertArrayEquals(texts, connector.receiveObjectArrayMessage(false));
        for (List<?> list : List.of(new ArrayList<>(Arrays.asList(values)), Arrays.asList(values))) {
            send(object((Serializable) list));
            assertArrayEquals(texts, connector.receiveObjectArrayMessage(true));
        }
        send(object((Serializable) List.of("a", 1)));
        assertArrayEquals(new String[] {"a", "1"}, connector.receiveObjectArrayMessage(false));
        send(object(new String[] {"Trades", "i", "x"}));
        assertArrayEquals(new String[] {"Trades", "i", "x"}, connector.receiveObjectArrayMessage(true));
        send(stream("a", null, (byte) 1, 2, 3L, 1.5, true));
        assertArrayEquals(new String[] {"a", null, "1", "2", "3", "1.5", "true"},
                connector.receiveObjectArrayMessage(false));
        send(object(new String[] {"x"}));
        assertArrayEquals(new String[] {"x"}, connector.receiveObjectArrayMessage(false));
    }

    @Test
    public void arraysThatDoNotFitAreRefused() throws Exception {
        assertTrue(unfiltered, unfiltered.contains("jdk.serialFilter limits the classes"));
        Object[][] refused = {
                {"a TextMessage", (TestBroker.Maker) session -> session.createTextMessage("a")},
                {"has 0 elements", object(new String[0])},
                {"has 0 elements", stream()},
                {"holds a java.lang.Integer", object(7)},
                {"holds null", object(null)},
                {"element 1 is a java.lang.String[]", object(new Object[] {"a", new String[] {"b"}})},
                {"element 0 is a byte[]", stream((Object) new byte[] {1})},
                {"has 1001 bytes", stream("x".repeat(600), "x".repeat(401))},
                {"REJECTED", object(new Attack())},
                {"REJECTED", object(new Object[] {"a", new Attack()})},
        };
        for (Object[] row : refused) {
            send((TestBroker.Maker) row[1]);
            checkRefused((String) row[0], connector.receiveObjectArrayMessage(false));
        }
        send(stream("Trades", "i"));
        checkRefused("has 2 elements, but must have at least 3", connector.receiveObjectArrayMessage(true));
        assertTrue("the object was brought to life", Files.notExists(attacked));
    }
}
