package com.morvex.kel.connectors;

import static org.junit.Assert.assertArrayEquals;
import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;
import static org.junit.Assert.assertNull;
import static org.junit.Assert.assertTrue;

import java.io.IOException;
import javax.jms.Connection;
import javax.jms.DeliveryMode;
import javax.jms.Message;
import javax.jms.MessageConsumer;
import javax.jms.ObjectMessage;
import javax.jms.Session;
import javax.jms.TextMessage;
import org.junit.AfterClass;
import org.junit.Before;
import org.junit.BeforeClass;
import org.junit.Test;

public class ConverterAndSendingTest {
    private static final String CONVERTER = Converter.class.getName();
    private static final String[] NOTHING = {null, null};
    private static TestBroker broker;

    /** Does with a message what its text says. */
    public static class Converter implements MessageConverter {
        @Override
        public void init(String parameter) throws Exception {
            if (!parameter.isEmpty()) throw new IOException("not " + parameter);
        }

        @Override
        public String[] toRow(Message message) throws Exception {
            String text = ((TextMessage) message).getText();
            return switch (text) {
                case "throws" -> throw new IOException("no such luck");
                case "overflows" -> toRow(message);
                case "no row" -> null;
                case "nulls" -> new String[] {null, null, null};
                default -> text.split(",");
            };
        }

        @Override
        public Message toMessage(String[] row, Session session) throws Exception {
            return row.length == 2 ? null :
                    session.createTextMessage(String.join("|", row));
            }
        }

        /** Cannot be made. */
        public abstract static class Unmakeable extends Converter {}

        @BeforeClass
        public static void start() throws Exception {
            broker = new TestBroker();
        }

        @AfterClass
        public static void stop() throws Exception {
            broker.close();
        }

        @Before
        public void clearLog() {
            LogCapture.clear();
        }

        @Test
        public void aConverterThatFailsCostsOneMessage() throws Exception {
            JmsConnector connector = broker.receiver("custom");
            for (String text : new String[] {"throws", "overflows", "no row", "T,i", "T,i,1", "nulls"}) {
                broker.send(TestBroker.queueNamed("custom"), session -> session.createTextMessage(text));
            }
            assertNull("no converter yet, so nothing is taken", connector.receiveCustomMessage());
            assertTrue(connector.initInConverter(CONVERTER, ""));
            for (String reason : new String[] {"call initInConverter", "no such luck", "StackOverflowError",
                         "made no row", "has 2 elements"}) {
                if (!reason.startsWith("call")) assertNull(reason, connector.receiveCustomMessage());
                assertTrue(LogCapture.lines(), LogCapture.lines().contains(reason));
                LogCapture.clear();
            }
            assertArrayEquals(new String[] {"T", "i", "1"}, connector.receiveCustomMessage());
            assertArrayEquals(new String[] {null, null, null}, connector.receiveCustomMessage());
            assertArrayEquals(NOTHING, connector.receiveCustomMessage());
        }

        @Test
        public void aConverterThatCannotBeLoadedIsNamed() {
            String[][] rows = {
                    {"com.example.Missing", "", "was not found on the class path"},
                    {"java.lang.String", "", "must implement com.morvex.kel.connectors.MessageConverter"},
                    {Unmakeable.class.getName(), "", "must be public, not abstract"},
                    {CONVERTER, "fine", "refused \"fine\" (parameter converterParam): not fine."},
            };
            JmsConnector connector = broker.queue("unused");
            for (String[] row : rows) {
                LogCapture.clear();
                assertFalse(connector.initInConverter(row[0], row[1]));
                assertFalse(connector.initOutConverter(row[0], row[1]));
                assertTrue(LogCapture.lines(), LogCapture.lines().contains(row[2]));
            }
        }

        @Test
        public void everyKindIsSent() throws Exception {
            JmsConnector connector = broker.queue("sent");
            assertTrue(connector.connectForOutput());
            assertTrue(connector.initOutConverter(CONVERTER, ""));
            assertTrue(connector.sendTextMessage("body", new String[] {"IBM", null}));
            assertTrue(connector.sendTextMessage("plain", new String[0]));
            assertTrue(connector.sendObjectArrayMessage(new String[] {"T", "i", null}, true));
            assertTrue(connector.sendCustomMessage(new String[] {"T", "i", "1"}));
            Connection connection = broker.connect();
            connection.start();
            Session session = connection.createSession(false, Session.AUTO_ACKNOWLEDGE);
            MessageConsumer consumer = session.createConsumer(TestBroker.queueNamed("sent"));
            TextMessage text = (TextMessage) consumer.receive(1_000);
            assertEquals("body", text.getText());
            assertEquals("IBM", text.getStringProperty("Symbol"));
            assertFalse(text.propertyExists("Shares"));
            assertEquals(DeliveryMode.PERSISTENT, text.getJMSDeliveryMode());
            assertEquals("plain", ((TextMessage) consumer.receive(1_000)).getText());
            ObjectMessage array = (ObjectMessage) consumer.receive(1_000);
            assertArrayEquals(new String[] {"T", "i", null}, (String[]) array.getObject());
            assertEquals("T|i|1", ((TextMessage) consumer.receive(1_000)).getText());
            connection.close();
        }

        @Test
        public void whatCannotBeSentIsFalseAndOneSentence() {
            JmsConnector connector = new JmsConnector("ConnectionFactory", "QUEUE", "unsent", false,
                    new int[4], new String[] {"two words", "or", "JMSType", "fine"},
                    new String[] {null, null, null, "1st"}, TestBroker.CONTEXT_FACTORY, broker.url(), "", "");
            checkFalse("not connected", connector.sendTextMessage("a", null));
            assertTrue(connector.connectForOutput());
            checkFalse("call initOutConverter", connector.sendCustomMessage(new String[] {"T", "i", "1"}));
            assertTrue(connector.initOutConverter(CONVERTER, ""));
            checkFalse("made no message", connector.sendCustomMessage(new String[] {"T", "i"}));
            checkFalse("\"two words\" (column 0)", connector.sendTextMessage("a", new String[] {"1"}));
            checkFalse("\"or\" (column 1)", connector.sendTextMessage("a", new String[] {null, "1"}));
            checkFalse(
                    "\"JMSType\" (column 2)", connector.sendTextMessage("a", new String[] {null, null, "1"}));
            checkFalse("\"1st\" (column 3)",
                    connector.sendTextMessage("a", new String[] {null, null, null, "1"}));
            checkFalse(
                    "5 fields, but the stream has 4 columns", connector.sendTextMessage("a", new String[5]));
            assertNull("a sender receives nothing", connector.receiveTextMessage());
            LogCapture.clear();
            connector.disconnect();
            checkFalse("not sent: no connection", connector.sendTextMessage("a", null));
        }

        private static void checkFalse(String reason, boolean result) {
            assertFalse(reason, result);
            assertTrue(LogCapture.lines(),
                    LogCapture.lines().contains(reason) && !LogCapture.lines().contains("\n"));
            LogCapture.clear();
        }
    }
