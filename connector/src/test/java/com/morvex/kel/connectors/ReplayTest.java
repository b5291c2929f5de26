package com.morvex.kel.connectors;

import static org.junit.Assert.*;

import java.io.*;
import java.nio.charset.StandardCharsets;
import java.util.*;
import javax.jms.*;
import org.junit.*;

/** What a host learns of each kind of message, and the same message sent once more. */
public class ReplayTest extends BrokerFixture {
    private static final String TEXT = "\u00e4 \u20ac \ud83d\ude00";
    private static final byte[] BYTES = {0, -1, 127, -128};
    private static final String[] ARRAY = {"Trades", null, "IBM"};

    @Before
    public void settleByHost() {
        System.setProperty("kel.jms.settle", "host");
        System.setProperty("kel.jms.settleMillis", "60000");
    }

    private static List<Object> streamValues() {
        return Arrays.asList("a", true, (byte) 1, (short) 2, 3, 4L, 5.5F, 6.25, 'c', BYTES, null);
    }

    private static void sendable(Message message) throws JMSException {
        message.setJMSCorrelationID("together");
        message.setJMSType("kind of");
        message.setStringProperty("text", "");
        message.setBooleanProperty("flag", true);
        message.setByteProperty("byte", (byte) -1);
        message.setShortProperty("short", (short) 300);
        message.setIntProperty("int", -70_000);
        message.setLongProperty("long", 1L << 40);
        message.setFloatProperty("float", 1.1F);
        message.setDoubleProperty("double", 1e-300);
        message.setStringProperty("JMSXGroupID", "group");
    }

    private static Message filled(Session session, String kind) throws JMSException {
        Message made;
        switch (kind) {
            case "text":
                made = session.createTextMessage(TEXT);
                break;
            case "bytes":
                made = session.createBytesMessage();
                ((BytesMessage) made).writeBytes(BYTES);
                break;
            case "object":
                made = session.createObjectMessage(ARRAY);
                break;
            case "stream":
                made = session.createStreamMessage();
                for (Object value : streamValues()) ((StreamMessage) made).writeObject(value);
                break;
            case "map":
                made = session.createMapMessage();
                for (int i = 0; i < streamValues().size(); ++i) ((MapMessage) made).setObject("k" + i, streamValues().get(i));
                break;
            default:
                made = session.createMessage();
        }
        sendable(made);
        return made;
    }

    /** What the kept body says to somebody who knows nothing of the connector. */
    private static String plain(String kind, byte[] body) throws Exception {
        if (kind.equals("text")) return new String(body, StandardCharsets.UTF_8);
        if (kind.equals("bytes") || kind.equals("none")) return Arrays.toString(body);
        Object value = new ObjectInputStream(new ByteArrayInputStream(body)).readObject();
        return (value instanceof Object[] ? "" : value.getClass().getSimpleName())
                + Arrays.deepToString(value instanceof List<?> list ? list.toArray()
                                : value instanceof Map<?, ?> map    ? new TreeMap<>(map).values().toArray()
                                                                    : (Object[]) value);
    }

    private static String expected(String kind) {
        Object[] values = streamValues().toArray();
        switch (kind) {
            case "text":
                return TEXT;
            case "bytes":
                return Arrays.toString(BYTES);
            case "object":
                return Arrays.toString(ARRAY);
            case "stream":
                return "ArrayList" + Arrays.deepToString(values);
            case "map":   // k10 stands behind k1
                List<Object> sorted = new ArrayList<>(streamValues());
                sorted.add(2, sorted.remove(10));
                return "LinkedHashMap" + Arrays.deepToString(sorted.toArray());
            default:
                return "[]";
        }
    }

    /** Name, type, value without what differs from message to message. */
    private static SortedSet<String> lasting(String[] description) {
        SortedSet<String> triples = new TreeSet<>();
        for (int i = 0; i < description.length; i += 3) {
            String triple = String.join("|", Arrays.copyOfRange(description, i, i + 3));
            if (!triple.startsWith("kelReplay")) triples.add(triple);
        }
        return triples;
    }

    private static void takeOne(JmsConnector connector) {
        for (int i = 0; i < 40 && Delivery.count() == 0; ++i) connector.receiveTextMessage();
        assertEquals(takeLog(), 1, Delivery.count());
    }

    @Test
    public void aMessageOfEachKindIsKeptWholeAndSentOnceMore() throws Exception {
        JmsConnector reader = receiver(""), sender = connector(url(), "");
        System.setProperty("kel.jms.trustObjectMessages", "true");
        JmsConnector trusting = connector(url(), "");
        assertTrue(sender.connectForOutput() && trusting.connectForOutput());
        for (String kind : new String[] {"text", "bytes", "object", "stream", "map", "none"}) {
            send(QUEUE, session -> filled(session, kind));
            takeOne(reader);
            byte[] body = Delivery.body(0);
            assertEquals(kind, expected(kind), plain(kind, body));
            String[] description = Delivery.describe(0);
            assertArrayEquals(new String[] {"kind", "", kind}, Arrays.copyOf(description, 3));
            String id = Delivery.taken()[0], time = Delivery.header("JMSTimestamp")[0];
            assertTrue(time, Math.abs(System.currentTimeMillis() - Long.parseLong(time)) < 60_000);
            for (String triple : new String[] {"JMSCorrelationID|header|together", "JMSType|header|kind of", "JMSPriority|header|4",
                         "JMSDeliveryMode|header|PERSISTENT", "JMSRedelivered|header|false", "JMSDestination|header|queue://q",
                         "text|String|", "flag|Boolean|true", "byte|Byte|-1", "short|Short|300", "int|Integer|-70000",
                         "long|Long|1099511627776", "float|Float|1.1", "double|Double|1.0E-300", "JMSXGroupID|String|group",
                         "JMSMessageID|header|" + id}) {
                assertTrue(kind + " has " + triple, lasting(description).contains(triple));
            }
            assertTrue(Delivery.settle());
            for (String round : new String[] {"once", "and once more"}) {
                assertTrue(takeLog(), Replay.send(trusting, body, Delivery.count() == 0 ? description : Delivery.describe(0), round));
                if (Delivery.count() > 0) assertTrue(Delivery.settle());
                takeOne(reader);
                assertEquals(kind, expected(kind), plain(kind, Delivery.body(0)));
                assertEquals(lasting(description), lasting(Delivery.describe(0)));
                assertEquals(id, Delivery.header("JMSMessageID")[0]);
                assertEquals(time, Delivery.header("JMSTimestamp")[0]);
                assertEquals(round, Delivery.property("kelReplayOf")[0]);
                assertNotEquals("its own ID", id, Delivery.taken()[0]);
            }
            assertTrue(Delivery.settle());
            if (!kind.equals("object") || ObjectInputFilter.Config.getSerialFilter() != null) continue;
            checkFails("is read only when the system property jdk.serialFilter", Replay.send(sender, body, description, "x"));
        }
        assertEquals("", takeLog());
    }

    @Test
    public void oneQuestionAnswersForTheWholeBatch() throws Exception {
        send(QUEUE, session -> filled(session, "text"), session -> session.createTextMessage("1"));
        JmsConnector reader = receiver("");
        while (Delivery.count() < 2) reader.receiveTextMessage();
        assertArrayEquals(new String[] {"together", null}, Delivery.header("JMSCorrelationID"));
        assertArrayEquals(new String[] {null, null}, Delivery.header("JMSExpiration"));
        assertArrayEquals(new String[] {"-70000", null}, Delivery.property("int"));
        assertNull("nobody has it", Delivery.property("JMSReplyTo"));
        assertThrows(ConnectorException.class, () -> Delivery.header("MessageID"));
        for (int outside : new int[] {-1, 2}) {
            assertNull(Delivery.body(outside));
            assertNull(Delivery.refusal(outside));
            assertEquals(0, Delivery.describe(outside).length);
        }
    }

    @Test
    public void whatCannotBeSentIsToldInOneSentence() throws Exception {
        JmsConnector sender = connector(url(), "");
        assertTrue(sender.connectForOutput());
        ByteArrayOutputStream file = new ByteArrayOutputStream();
        new ObjectOutputStream(file).writeObject(new ArrayList<>(List.of(new File("x"))));
        record Case(String reason, byte[] body, String... description) {}
        byte[] none = {};
        for (Case each : new Case[] {
                     new Case("its body was not kept", null, "kind", "", "text"),
                     new Case("triples that begin with its kind", none),
                     new Case("triples that begin with its kind", none, "kind", "", "text", "n"),
                     new Case("its kind \"blob\" is none of text, bytes", none, "kind", "", "blob"),
                     new Case("its property n is \"1.5\", which is no Integer", none, "kind", "", "text", "n", "Integer", "1.5"),
                     new Case("\"Date\" is no type of a property", none, "kind", "", "text", "n", "Date", "1"),
                     new Case("its body cannot be deserialised", none, "kind", "", "map"),
                     new Case("its body cannot be deserialised: filter status: REJECTED", file.toByteArray(), "kind", "", "stream"),
             }) {
            checkFails(each.reason, Replay.send(sender, each.body, each.description, "1"));
        }
        assertEquals(0, waiting(QUEUE));
        checkFails("not connected", Replay.send(receiver(""), none, new String[] {"kind", "", "text"}, "1"));
    }

    private void sendSides(Destination destination) throws JMSException {
        for (String side : new String[] {"S", "B", "S", "B"}) {
            send(destination, session -> {
                Message message = session.createTextMessage(side.equals("B") ? "1" : "0");
                message.setStringProperty("Side", side);
                return message;
            });
        }
    }

    private JmsConnector to(String type) {
        boolean durable = type.equals("durable");
        connectors.add(new JmsConnector("ConnectionFactory", type.equals("queue") ? "QUEUE" : "TOPIC", type.equals("queue") ? "q" : "t",
                durable, null, null, null, CONTEXT_FACTORY, url(), durable ? "d" : "", durable ? "s" : ""));
        return connectors.get(connectors.size() - 1);
    }

    @Test
    public void aSelectorChoosesWhereverMessagesComeFrom() throws Exception {
        System.setProperty("kel.jms.browseMillis", "700");
        for (String type : new String[] {"queue", "topic", "durable"}) {
            System.setProperty("kel.jms.selector", "Side = 'B'");
            Destination destination = type.equals("queue") ? QUEUE : TOPIC;
            JmsConnector reader = to(type), viewer = to(type);
            assertTrue(viewer.connectForInput(false));
            if (type.equals("queue")) sendSides(destination);
            else later(200_000, () -> sendSides(destination));
            if (!type.equals("queue")) assertTrue(reader.connectForInput(true));
            assertArrayEquals(type, new String[] {"1", "1"}, viewer.browseTextMessages());
            if (type.equals("queue")) assertTrue(reader.connectForInput(true));
            assertEquals(type, List.of(1, 1), receive(reader, 2));
            assertEquals("", reader.receiveTextMessage());
            assertTrue(Delivery.settle() && reader.disconnect());
            System.setProperty("kel.jms.selector", "Side = ");
            String wrong = "he selector \"Side = \" (host.selector) is not valid: Parse error";
            long start = System.nanoTime();
            checkFails(wrong, to(type).connectForInput(true));
            JmsConnector blind = to(type);
            assertTrue(blind.connectForInput(false));
            assertTrue(assertThrows(ConnectorException.class, blind::browseTextMessages).getMessage().contains(wrong));
            assertTrue("is not tried again", System.nanoTime() - start < 1_500_000_000L);
        }
    }
}
