package com.morvex.kel.connectors;

import static org.junit.Assert.assertArrayEquals;
import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertThrows;
import static org.junit.Assert.assertTrue;

import java.util.List;
import java.util.stream.IntStream;
import javax.jms.Session;
import javax.jms.StreamMessage;
import org.junit.After;
import org.junit.Before;
import org.junit.Test;

public class BrowsingTest {
    private TestBroker broker;

    @Before
    public void start() throws Exception {
        LogCapture.clear();
        broker = new TestBroker();
    }

    @After
    public void stop() throws Exception {
        broker.close();
    }

    private JmsConnector browser(String queue) {
        JmsConnector connector = broker.queue(queue);
        assertTrue(LogCapture.lines(), connector.connectForInput(false));
        return connector;
    }

    private static String[] texts(int first, int last) {
        return IntStream.rangeClosed(first, last).mapToObj(Integer::toString).toList().toArray(new String[0]);
    }

    @Test
    public void aQueueKeepsEverythingInOrder() throws Exception {
        JmsConnector connector = browser("q");
        assertArrayEquals(new String[0], connector.browseTextMessages());
        broker.sendNumbers(TestBroker.queueNamed("q"), 1, 3);
        broker.send(TestBroker.queueNamed("q"), Session::createMapMessage);
        broker.sendNumbers(TestBroker.queueNamed("q"), 4, 150);
        assertArrayEquals("a hundred, less the unusable one", texts(1, 99), connector.browseTextMessages());
        assertTrue(LogCapture.lines(), LogCapture.lines().contains("a MapMessage"));
        assertArrayEquals("a second look sees the same", texts(1, 99), connector.browseTextMessages());
        JmsConnector receiver = broker.receiver("q");
        assertEquals(List.of(1, 2, 3), TestBroker.numbers(receiver, 3));
        assertEquals("the unusable one", null, receiver.receiveTextMessage());
        assertEquals(IntStream.rangeClosed(4, 150).boxed().toList(), TestBroker.numbers(receiver, 147));
    }

    @Test
    public void arraysAndRowsCarryNoNulls() throws Exception {
        JmsConnector connector = browser("q");
        broker.send(TestBroker.queueNamed("q"), session -> {
            StreamMessage message = session.createStreamMessage();
            message.writeObject("a");
            message.writeObject(null);
            return message;
        });
        assertArrayEquals(new Object[] {new String[] {"a", ""}}, connector.browseObjectArrayMessages());
        assertThrows(ConnectorException.class, connector::browseCustomMessages);
        assertTrue(connector.initInConverter(ConverterAndSendingTest.Converter.class.getName(), ""));
        broker.send(TestBroker.queueNamed("q"), session -> session.createTextMessage("nulls"));
        assertArrayEquals("the array is no text and is left out", new Object[] {new String[] {"", "", ""}},
                connector.browseCustomMessages());
    }

    @Test
    public void aTopicIsListenedToForAWhile() throws Exception {
        System.setProperty("kel.jms.browseMillis", "400");
        JmsConnector connector;
        try {
            connector = broker.topic("t");
        } finally {
            System.clearProperty("kel.jms.browseMillis");
        }
        assertTrue(connector.connectForInput(false));
        Thread sender = new Thread(() -> {
            try {
                Thread.sleep(150);
                broker.sendNumbers(TestBroker.topicNamed("t"), 1, 5);
            } catch (Exception e) {
                throw new AssertionError(e);
            }
        });
        sender.start();
        assertArrayEquals(texts(1, 5), connector.browseTextMessages());
        sender.join();
        connector.disconnect();
        assertThrows(ConnectorException.class, connector::browseTextMessages);
    }
}
