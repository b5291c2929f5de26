package com.morvex.kel.connectors;

import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertNotNull;
import static org.junit.Assert.assertThrows;
import static org.junit.Assert.assertTrue;

import java.util.ArrayList;
import java.util.List;
import java.util.Random;
import java.util.stream.IntStream;
import javax.jms.Connection;
import org.junit.After;
import org.junit.Before;
import org.junit.Test;

/** Stopping, acknowledging, committing and coming back. */
public class LifecycleTest {
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

    private static List<Integer> range(int first, int last) {
        return IntStream.rangeClosed(first, last).boxed().toList();
    }

    private static Thread disconnectAfter(JmsConnector connector, long micros) {
        Thread thread = new Thread(() -> {
            long end = System.nanoTime() + micros * 1_000;
            while (System.nanoTime() < end) Thread.onSpinWait();
            assertTrue(LogCapture.lines(), connector.disconnect());
        });
        thread.start();
        return thread;
    }

    @Test
    public void stopEndsAWaitAtOnce() throws Exception {
        for (String url : new String[] {broker.url(), "vm://tests?create=false"}) checkStop(url);
    }

    private void checkStop(String url) throws Exception {
        System.setProperty("kel.jms.receiveTimeoutMillis", "20000");
        JmsConnector connector;
        try {
            connector = broker.connector(url, "QUEUE", "q", false, "", "");
        } finally {
            System.clearProperty("kel.jms.receiveTimeoutMillis");
        }
        assertTrue(connector.connectForInput(true));
        long start = System.nanoTime();
        Thread stopper = disconnectAfter(connector, 100_000);
        assertEquals("", connector.receiveTextMessage());
        stopper.join();
        assertEquals("a stopped connector has nothing waiting", "", connector.receiveTextMessage());
        assertTrue(System.nanoTime() - start < 2_000_000_000L);
        assertTrue("a second stop is harmless", connector.disconnect());
        assertEquals("", LogCapture.lines());
    }

    @Test
    public void cleanStopsAtAnyMomentRepeatAndLoseNothing() throws Exception {
        int last = 3_000;
        Thread sender = new Thread(() -> {
            try {
                for (int i = 1; i <= last; i += 50) {
                    broker.sendNumbers(TestBroker.queueNamed("q"), i, i + 49);
                    Thread.sleep(3);
                }
            } catch (Exception e) {
                throw new AssertionError(e);
            }
        });
        sender.start();
        List<Integer> found = new ArrayList<>();
        Random random = new Random(7);
        while (found.size() < last) {
            JmsConnector connector = broker.receiver("q");
            Thread stopper = disconnectAfter(connector, random.nextInt(15_000));
            while (stopper.isAlive()) {
                String text = connector.receiveTextMessage();
                assertNotNull(LogCapture.lines(), text);
                if (!text.isEmpty()) found.add(Integer.valueOf(text));
            }
        }
        sender.join();
        assertEquals(range(1, last), found);
        assertEquals("", LogCapture.lines());
    }

    @Test
    public void aCutConnectionRepeatsOnlyWhatWasNotAcknowledged() throws Exception {
        broker.sendNumbers(TestBroker.queueNamed("q"), 1, 190);
        JmsConnector connector = broker.receiver("q");
        // With everything at hand no receive has to wait, which would acknowledge what is due.
        TestBroker.waitUntil("sent out", () -> broker.counts("q").getDispatched().getCount() == 190);
        Thread.sleep(200);
        List<Integer> found = new ArrayList<>(TestBroker.numbers(connector, 150));
        // What the client has acknowledged may be on its way yet, and would get lost with the connection.
        TestBroker.waitUntil(
                "acknowledged by hundreds", () -> broker.counts("q").getDequeues().getCount() == 100);
        broker.cut();
        TestBroker.waitUntil("the loss is told",
                () -> LogCapture.lines().contains("the last 50 messages handed on will come again"));
        found.addAll(TestBroker.numbers(connector, 90));
        assertEquals("a hundred are acknowledged, fifty come again", 240, found.size());
        assertEquals(range(1, 190), found.stream().distinct().sorted().toList());
        assertEquals("", connector.receiveTextMessage());
        TestBroker.waitUntil(
                "acknowledged before waiting", () -> broker.counts("q").getDequeues().getCount() == 190);
    }

    @Test
    public void aDurableSubscriptionRepeatsWhatWasNotCommitted() throws Exception {
        for (int batch : new int[] {1, 3, 100, 250}) {
            JmsConnector first = broker.durable("t", "batch" + batch);
            assertTrue(first.connectForInput(true));
            broker.sendNumbers(TestBroker.topicNamed("t"), 1, 260);
            for (int i = 1; i <= 255; ++i) {
                assertEquals(range(i, i), TestBroker.numbers(first, 1));
                if (i % batch == 0) first.commitTransaction();
            }
            assertTrue(first.disconnect());
            JmsConnector second = broker.durable("t", "batch" + batch);
            assertTrue(second.connectForInput(true));
            int committed = 255 / batch * batch;
            assertEquals(range(committed + 1, 260), TestBroker.numbers(second, 260 - committed));
            assertEquals("", second.receiveTextMessage());
        }
        assertEquals("", LogCapture.lines());
    }

    @Test
    public void aFailedCommitSaysHowManyComeAgain() throws Exception {
        JmsConnector connector = broker.durable("t", "d");
        assertTrue(connector.connectForInput(true));
        connector.commitTransaction();
        broker.sendNumbers(TestBroker.topicNamed("t"), 1, 5);
        assertEquals(range(1, 3), TestBroker.numbers(connector, 3));
        broker.cut();
        ConnectorException failure = assertThrows(ConnectorException.class, connector::commitTransaction);
        assertTrue(failure.getMessage(), failure.getMessage().contains("3 messages will come again"));
        assertTrue(LogCapture.lines(), LogCapture.lines().contains(failure.getMessage()));
        assertEquals(range(1, 5), TestBroker.numbers(connector, 5));
        connector.commitTransaction();
        assertTrue(connector.disconnect());
        connector = broker.durable("t", "d");
        assertTrue(connector.connectForInput(true));
        assertEquals("", connector.receiveTextMessage());
    }

    @Test
    public void aStopWhileReconnectingLeavesTheClientIdFree() throws Exception {
        Random random = new Random(3);
        for (int round = 0; round < 12; ++round) {
            JmsConnector connector = broker.durable("t", "again");
            assertTrue(LogCapture.lines(), connector.connectForInput(true));
            broker.cut();
            Thread.sleep(random.nextInt(200));
            assertTrue(connector.disconnect());
        }
        TestBroker.waitUntil("no connection is left", () -> broker.connections() == 0);
        Thread.sleep(300);
        assertEquals("none appears late", 0, broker.connections());
    }

    @Test
    public void anOutageIsNoBadMessage() throws Exception {
        JmsConnector connector = broker.receiver("q");
        JmsConnector stopped = broker.receiver("q");
        broker.stop();
        for (int i = 0; i < 6; ++i) assertEquals("", connector.receiveTextMessage());
        long start = System.nanoTime();
        assertTrue(stopped.disconnect());
        assertTrue("an outage does not hold up a stop", System.nanoTime() - start < 500_000_000L);
        broker.start();
        broker.sendNumbers(TestBroker.queueNamed("q"), 1, 3);
        assertEquals(range(1, 3), TestBroker.numbers(connector, 3));
        TestBroker.waitUntil("the loss and the return are told",
                () -> LogCapture.lines().matches("(?s).*was lost and is made again.*is there again.*"));
        TestBroker.waitUntil("only the one that goes on is connected", () -> broker.connections() == 1);
    }

    @Test
    public void aSenderComesBackToo() throws Exception {
        JmsConnector sender = broker.queue("q");
        assertTrue(sender.connectForOutput());
        broker.cut();
        TestBroker.waitUntil("sent again", () -> sender.sendTextMessage("1", null));
        assertEquals(range(1, 1), TestBroker.numbers(broker.receiver("q"), 1));
    }

    @Test
    public void aClientIdInUseIsWaitedForWhileReconnecting() throws Exception {
        JmsConnector connector = broker.durable("t", "id");
        assertTrue(connector.connectForInput(true));
        broker.cut();
        Connection other = broker.connect();
        other.setClientID("id");
        other.start();
        TestBroker.waitUntil("refused", () -> LogCapture.lines().contains("\"id\" (parameter clientID)"));
        assertEquals("", connector.receiveTextMessage());
        other.close();
        TestBroker.waitUntil("connected", () -> LogCapture.lines().contains("is there again"));
        broker.sendNumbers(TestBroker.topicNamed("t"), 1, 2);
        assertEquals(range(1, 2), TestBroker.numbers(connector, 2));
    }

    @Test
    public void aForgottenConnectorMakesWayForItsClientIdAndIsCollected() throws Exception {
        JmsConnector forgotten = broker.durable("t", "id");
        assertTrue(forgotten.connectForInput(true));
        JmsConnector next = broker.durable("t", "id");
        assertTrue(LogCapture.lines(), next.connectForInput(true));
        assertEquals("", forgotten.receiveTextMessage());
        broker.sendNumbers(TestBroker.topicNamed("t"), 1, 2);
        assertEquals(range(1, 2), TestBroker.numbers(next, 2));
        forgotten = null;
        next = null;
        broker.forgetConnectors();
        TestBroker.waitUntil("closed", () -> {
            System.gc();
            return broker.connections() == 0;
        });
    }

    @Test
    public void pausesGrowWithTheOutage() {
        for (int round = 0; round < 200; ++round) {
            Backoff backoff = new Backoff();
            long away = 0;
            long pause = 0;
            while (away < 600_000) {
                pause = backoff.nextMillis();
                assertTrue(
                        away + " then " + pause, pause <= 100 + away * 0.3 && pause <= 30_000 && pause >= 75);
                away += pause;
            }
            assertTrue("" + pause, pause >= 22_500);
        }
    }
}
