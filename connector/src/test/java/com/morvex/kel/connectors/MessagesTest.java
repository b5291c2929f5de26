package com.morvex.kel.connectors;

import static org.junit.Assert.*;

import java.io.*;
import java.math.BigDecimal;
import java.math.BigInteger;
import java.nio.charset.StandardCharsets;
import java.sql.Timestamp;
import java.time.Instant;
import java.util.*;
import java.util.function.Supplier;
import javax.jms.*;
import org.junit.*;

/** What becomes of each kind of message: read, converted, sent, browsed, refused with what sentence. */
public class MessagesTest extends BrokerFixture {
    private static final String CONVERTER = Converter.class.getName();
    private static boolean attacked;
    private JmsConnector connector;

    /** Leaves a trace when it is brought to life. */
    private static final class Attack implements Serializable {
        private static final long serialVersionUID = 1L;

        private void readObject(ObjectInputStream in) { attacked = true; }
    }

    /** Does with a message what its text says. */
    public static class Converter implements MessageConverter {
        @Override
        public void init(String parameter) throws Exception {
            if (!parameter.isEmpty()) throw new IOException("not " + parameter);
        }

        @Override
        public String[] toRow(Message message) throws Exception {
            String text = ((TextMessage) message).getText();
            if (text.equals("throws")) throw new IOException("no such luck");
            if (text.equals("overflows")) return toRow(message);
            if (text.equals("sneaks")) MessagesTest.<RuntimeException>sneak(new Throwable("past the compiler"));
            if (text.equals("circles")) throw circle();
            if (text.equals("no row")) return null;
            if (text.equals("nulls")) return new String[3];
            if (!text.equals("properties")) return text.split(",");
            String count = message.getStringProperty("Count");
            return new String[] {"" + message.propertyExists("Symbol"), count, "" + message.getJMSDeliveryMode()};
        }

        @Override
        public Message toMessage(String[] row, Session session) throws Exception {
            return row.length == 2 ? null : session.createTextMessage(String.join("|", row));
        }
    }

    @SuppressWarnings("unchecked")
    private static <T extends Throwable> void sneak(Throwable any) throws T {
        T unchecked = (T) any;
        throw unchecked;
    }

    private static Exception circle() {
        Exception one = new Exception("round and round"), other = new Exception("the other", one);
        one.initCause(other);
        return one;
    }

    /** Cannot be made. */
    public abstract static class Unmakeable extends Converter {}

    @Before
    public void connect() throws Exception {
        System.setProperty("kel.jms.maxMessageBytes", "1000");
        System.setProperty("kel.jms.maxElements", "20");
        System.setProperty("kel.jms.browseMillis", "1000");
        // A filter is set only once in a JVM, so what happens without one comes first.
        if (ObjectInputFilter.Config.getSerialFilter() != null) return;
        connector = receiver("");
        Object[] unfiltered = {"jdk.serialFilter limits the classes", object(new Attack())};
        checkRefused(() -> connector.receiveObjectArrayMessage(false), unfiltered);
        connector.disconnect();
        String values = "maxdepth=10;java.lang.*;java.math.*;java.util.*;java.sql.*;!*";
        ObjectInputFilter.Config.setSerialFilter(ObjectInputFilter.Config.createFilter(values));
    }

    @After
    public void checkNoAttack() {
        assertFalse("the object was brought to life", attacked);
    }

    private static Link.MessageMaker text(String text) { return session -> session.createTextMessage(text); }

    private static Link.MessageMaker object(Serializable body) { return session -> session.createObjectMessage(body); }

    private static Link.MessageMaker bytes(byte... content) {
        return session -> {
            BytesMessage message = session.createBytesMessage();
            message.writeBytes(content);
            return message;
        };
    }

    private static Link.MessageMaker stream(Object... values) {
        return session -> {
            StreamMessage message = session.createStreamMessage();
            for (Object value : values) message.writeObject(value);
            return message;
        };
    }

    /** Rows of a reason and the message that is refused for it. */
    private void checkRefused(Supplier<?> receive, Object[]... rows) throws Exception {
        for (Object[] row : rows) {
            send(QUEUE, (Link.MessageMaker) row[1]);
            assertNull(row[0].toString(), receive.get());
            String log = takeLog();
            assertTrue(log, log.matches("The message ID:.* was refused: .*\\Q" + row[0] + "\\E.*"));
        }
        assertEquals("", connector.receiveTextMessage());
    }

    @Test
    public void textsAreTakenAndEverythingElseIsRefused() throws Exception {
        connector = receiver("");
        for (String text : new String[] {"Trades,\u00e9\u20ac\ud83d\ude00\u0000,1", "x".repeat(1000), "\u20ac".repeat(333)}) {
            send(QUEUE, text(text), bytes(text.getBytes(StandardCharsets.UTF_8)));
            assertEquals(text, connector.receiveTextMessage());
            assertEquals(text, connector.receiveTextMessage());
        }
        Object[][] refused = {
                {"body is empty", text("")},
                {"body is empty", text(null)},
                {"body is empty", bytes()},
                {"a message without a body", (Link.MessageMaker) Session::createMessage},
                {"a MapMessage", (Link.MessageMaker) Session::createMapMessage},
                {"a StreamMessage", stream("a")},
                {"an ObjectMessage", object("a")},
                {"not UTF-8", bytes((byte) 'a', (byte) 0xc3)},
                {"not UTF-8", bytes((byte) 0xed, (byte) 0xa0, (byte) 0x80)},
                {"has 1001 bytes", bytes(new byte[1001])},
                {"has 1002 bytes", text("\u20ac".repeat(334))},
        };
        checkRefused(connector::receiveTextMessage, refused);
    }

    @Test
    public void arraysBecomeTextsOrAreRefused() throws Exception {
        connector = receiver("");
        Object[] values = {"a", null, 'c', (byte) 1, (short) 2, 3, 4L, 5.5f, 6.25, true, new BigDecimal("1E+3"), new Date(1577934245250L),
                new Date(-500), Timestamp.from(Instant.parse("2020-01-02T03:04:05.123456Z"))};
        String texts = "[a, null, c, 1, 2, 3, 4, 5.5, 6.25, true, 1000, 1577934245.250, -1.500, 1577934245.123456]";
        Object[][] rows = {
                {object(values), texts},
                {object(new ArrayList<>(Arrays.asList(values))), texts},
                {object((Serializable) List.of("a", 1, 2)), "[a, 1, 2]"},
                {object(new String[] {"Trades", "i", "x"}), "[Trades, i, x]"},
                {stream("a", null, (byte) 1, 2, 3L, 1.5, true), "[a, null, 1, 2, 3, 1.5, true]"},
        };
        for (Object[] row : rows) {
            send(QUEUE, (Link.MessageMaker) row[0]);
            assertEquals(row[1], Arrays.toString(connector.receiveObjectArrayMessage(true)));
        }
        assertArrayEquals(new String[0], connector.receiveObjectArrayMessage(false));
        Object[][] refused = {
                {"a TextMessage", text("a")},
                {"has 0 elements", object(new String[0])},
                {"has 0 elements", stream()},
                {"holds a java.lang.Integer", object(7)},
                {"holds null", object(null)},
                {"element 1 is a java.lang.String[]", object(new Object[] {"a", new String[] {"b"}})},
                {"element 0 is a byte[]", stream((Object) new byte[] {1})},
                {"at least 1001 bytes", stream("x".repeat(600), "x".repeat(401))},
                {"at least 1002 bytes", stream("\u20ac".repeat(333), "abc")},
                {"more than 20 elements", stream(new Object[21])},
                {"more than 20 elements", object(new ArrayList<>(Collections.nCopies(21, null)))},
                {"element 1 is a number of more than 1000 digits", object(new Object[] {1, BigInteger.TEN.pow(1000)})},
                {"element 0 is a number of more than 1000 digits", object(new Object[] {new BigDecimal("1E+1000")})},
                {"element 0 is a number of more than 1000 digits", object(new Object[] {new BigDecimal("1E-2000000000")})},
                {"REJECTED", object(new Attack())},
                {"REJECTED", object(new Object[] {"a", new Attack()})},
        };
        checkRefused(() -> connector.receiveObjectArrayMessage(false), refused);
        Object[] prefixOnly = {"at least 3", stream("Trades", "i")};
        checkRefused(() -> connector.receiveObjectArrayMessage(true), prefixOnly);
    }

    @Test
    public void aConverterThatFailsCostsOneMessage() throws Exception {
        connector = receiver("");
        send(QUEUE, text("T,i,1"));
        assertNull("no converter yet, so nothing is taken", connector.receiveCustomMessage());
        assertTrue(takeLog().contains("call initInConverter"));
        assertTrue(connector.initInConverter(CONVERTER, ""));
        assertArrayEquals(new String[] {"T", "i", "1"}, connector.receiveCustomMessage());
        Object[][] refused = {
                {"no such luck", text("throws")},
                {"StackOverflowError", text("overflows")},
                {"past the compiler", text("sneaks")},
                {"round and round", text("circles")},
                {"made no row", text("no row")},
                {"has 2 elements", text("T,i")},
                {"has 1001 bytes", text("x".repeat(1001))},
        };
        checkRefused(connector::receiveCustomMessage, refused);
        assertArrayEquals(new String[] {null, null}, connector.receiveCustomMessage());
        String[][] rows = {
                {"com.example.Missing", "", "was not found on the class path"},
                {"java.lang.String", "", "must implement com.morvex.kel.connectors.MessageConverter"},
                {Unmakeable.class.getName(), "", "must be public, not abstract"},
                {CONVERTER, "fine", "refused \"fine\" (parameter converterParam): not fine."},
        };
        for (String[] row : rows) {
            assertFalse(connector.initInConverter(row[0], row[1]) || connector.initOutConverter(row[0], row[1]));
            assertTrue(row[2], takeLog().contains(row[2]));
        }
    }

    @Test
    public void whatIsSaidShowsNoSecretAndTakesItsLengthInTime() {
        String[][] rows = {
                {"tcp://u:pw@h:1?a.password=x&b=c", "tcp://u:***@h:1?a.password=***&b=c"},
                {"failover:(tcp://h:1?jms.password=a,ssl://u:p@h)?x=y", "failover:(tcp://h:1?jms.password=***,ssl://u:***@h)?x=y"},
                {"-Djavax.net.ssl.trustStorePassword=s3cret \"PASSWORD: q\"", "-Djavax.net.ssl.trustStorePassword=*** \"PASSWORD: ***\""},
                {"java.naming.security.credentials=a, passwd=b", "java.naming.security.credentials=***, passwd=***"},
                {"the password is wrong; tcp://h:1?a=b@c", "the password is wrong; tcp://h:1?a=b@c"},
                {"\u001b[31m\u009b\u2028\u202e\n", "\\u001B[31m\\u009B\\u2028\\u202E\\u000A"},
        };
        for (String[] row : rows) assertEquals(row[1], SafeText.of(row[0]));
        long start = System.nanoTime();
        for (String shape : new String[] {"password", "passworda", "://a:", "a", "password =", "@:"}) {
            SafeText.of("password" + shape.repeat(1_000_000));
        }
        assertTrue(System.nanoTime() - start < 20_000_000_000L);
    }

    @Test
    public void whatIsSentArrivesOrIsFalseAndOneSentence() {
        connector = connector(url(), "");
        checkFails("not connected", connector.sendTextMessage("a", null));
        assertTrue(connector.connectForOutput());
        checkFails("call initOutConverter", connector.sendCustomMessage(new String[] {"T", "i", "1"}));
        assertTrue(connector.initOutConverter(CONVERTER, ""));
        checkFails("made no message", connector.sendCustomMessage(new String[] {"T", "i"}));
        String[] names = {"\"two words\" (column 2)", "\"or\" (column 3)", "\"JMSType\" (column 4)", "6 fields"};
        for (int i = 0; i < names.length; ++i) {
            String[] fields = new String[i + 3];
            fields[i + 2] = "1";
            checkFails(names[i], connector.sendTextMessage("a", fields));
        }
        assertTrue(connector.sendTextMessage("properties", new String[] {null, "7"}));
        assertTrue(connector.sendObjectArrayMessage(new String[] {"T", "i", null}, true));
        assertTrue(connector.sendCustomMessage(new String[] {"T", "i", "1"}));
        JmsConnector reader = receiver("");
        assertTrue(reader.initInConverter(CONVERTER, ""));
        assertArrayEquals(new String[] {"false", "7", "" + DeliveryMode.PERSISTENT}, reader.receiveCustomMessage());
        assertArrayEquals(new String[] {"T", "i", null}, reader.receiveObjectArrayMessage(true));
        assertEquals("T|i|1", reader.receiveTextMessage());
        assertNull("a sender receives nothing", connector.receiveTextMessage());
        takeLog();
        connector.disconnect();
        checkFails("no connection", connector.sendTextMessage("a", null));
    }

    @Test
    public void browsingKeepsEverythingInOrder() throws Exception {
        connector = connector(url(), "");
        assertTrue(connector.connectForInput(false));
        assertEquals(0, connector.browseTextMessages().length);
        sendNumbers(QUEUE, 1, 3);
        send(QUEUE, stream("a", null));
        sendNumbers(QUEUE, 4, 150);
        for (int look = 0; look < 2; ++look) {   // a hundred, less the unusable one
            assertEquals(numbers(1, 99).toString(), Arrays.toString(connector.browseTextMessages()));
        }
        assertTrue(takeLog().contains("a StreamMessage"));
        assertEquals("[[a, ]]", Arrays.deepToString(connector.browseObjectArrayMessages()));
        assertThrows(ConnectorException.class, connector::browseCustomMessages);
        JmsConnector reader = receiver("");
        assertEquals(numbers(1, 3), receive(reader, 3));
        assertNotNull(reader.receiveObjectArrayMessage(false));
        assertEquals(numbers(4, 150), receive(reader, 147));
        send(QUEUE, text("nulls"));
        assertTrue(connector.initInConverter(CONVERTER, ""));
        assertEquals("[[, , ]]", Arrays.deepToString(connector.browseCustomMessages()));
        // A topic keeps none, so it is listened to for a while.
        JmsConnector listener = connector(url(), "id");
        assertTrue(listener.connectForInput(false));
        later(100_000, () -> sendNumbers(TOPIC, 1, 5));
        assertArrayEquals(new String[] {"1", "2", "3", "4", "5"}, listener.browseTextMessages());
        var consumers = broker.getRegionBroker().getDestinationMap().get(TOPIC).getDestinationStatistics().getConsumers();
        waitUntil("nothing of the browsing is left", () -> consumers.getCount() == 0);
        listener.disconnect();
        assertThrows(ConnectorException.class, listener::browseTextMessages);
    }
}
