package com.morvex.kel.connectors;

import static com.morvex.kel.connectors.TestBroker.*;
import static org.junit.Assert.*;

import java.util.*;
import javax.jms.Connection;
import org.junit.*;

/** Stopping, acknowledging, committing and coming back. */
public class LifecycleTest {
    private TestBroker broker;

    @Before
    public void start() throws Exception {
        broker = new TestBroker();
    }

    @After
    public void stop() throws Exception {
        broker.close();
    }

    @Test
    public void stopEndsAWaitAtOnce() throws Exception {
        for (String url : new String[] {broker.url(), "vm://tests?create=false"}) {
            JmsConnector connector =
                    limited("receiveTimeoutMillis", "20000", () -> broker.connector(url, ""));
            assertTrue(connector.connectForInput(true));
            long start = System.nanoTime();
            Thread stopper = later(100_000, () -> assertTrue(connector.disconnect()));
            assertEquals("", connector.receiveTextMessage());
            stopper.join();
            assertEquals("a stopped connector has nothing waiting", "", connector.receiveTextMessage());
            assertTrue(System.nanoTime() - start < 2_000_000_000L);
            assertTrue("a second stop is harmless", connector.disconnect());
        }
        assertEquals("", takeLog());
    }

    @Test
    public void cleanStopsAtAnyMomentRepeatAndLoseNothing() throws Exception {
        broker.sendNumbers(QUEUE, 1, 50);
        JmsConnector first = broker.receiver("");
        List<Integer> found = new ArrayList<>(receive(first, 7));
        assertTrue(first.disconnect());
        Thread sender = later(0, () -> {
            for (int i = 51; i <= 3_000; i += 50) {
                broker.sendNumbers(QUEUE, i, i + 49);
                Thread.sleep(3);
            }
        });
        Random random = new Random(7);
        while (found.size() < 3_000) {
            JmsConnector connector = broker.receiver("");
            Thread stopper = later(random.nextInt(15_000), () -> assertTrue(connector.disconnect()));
            while (stopper.isAlive()) {
                String text = connector.receiveTextMessage();
                if (!text.isEmpty()) found.add(Integer.valueOf(text));
            }
        }
        sender.join();
        assertEquals(numbers(1, 3_000), found);
        assertEquals("", takeLog());
    }

    @Test
    public void aCutConnectionRepeatsOnlyWhatWasNotAcknowledged() throws Exception {
        broker.sendNumbers(QUEUE, 1, 190);
        JmsConnector connector = broker.receiver("");
        // With everything at hand no receive has to wait, which would acknowledge what is due.
        waitUntil("sent out", () -> broker.counts().getDispatched().getCount() == 190);
        Thread.sleep(200);
        List<Integer> found = new ArrayList<>(receive(connector, 150));
        // What the client has acknowledged may be on its way yet, and would get lost with the connection.
        waitUntil("acknowledged by hundreds", () -> broker.counts().getDequeues().getCount() == 100);
        broker.cut();
        waitUntil("the loss is told", () -> logged("the last 50 messages handed on will come again"));
        found.addAll(receive(connector, 90));
        assertEquals("a hundred are acknowledged, fifty come again", 240, found.size());
        assertEquals(numbers(1, 190), found.stream().distinct().sorted().toList());
        assertEquals("", connector.receiveTextMessage());
        waitUntil("acknowledged before waiting", () -> broker.counts().getDequeues().getCount() == 190);
    }

    @Test
    public void aDurableSubscriptionRepeatsWhatWasNotCommitted() throws Exception {
        for (int batch : new int[] {1, 3, 100, 250}) {
            JmsConnector first = broker.receiver("batch" + batch);
            broker.sendNumbers(TOPIC, 1, 260);
            for (int i = 1; i <= 255; ++i) {
                assertEquals(List.of(i), receive(first, 1));
                if (i % batch == 0) first.commitTransaction();
            }
            assertTrue(first.disconnect());
            JmsConnector second = broker.receiver("batch" + batch);
            int committed = 255 / batch * batch;
            assertEquals(numbers(committed + 1, 260), receive(second, 260 - committed));
            assertEquals("", second.receiveTextMessage());
        }
        assertEquals("", takeLog());
    }

    @Test
    public void aFailedCommitSaysHowManyComeAgain() throws Exception {
        JmsConnector connector = broker.receiver("d");
        connector.commitTransaction();
        broker.sendNumbers(TOPIC, 1, 5);
        assertEquals(numbers(1, 3), receive(connector, 3));
        broker.cut();
        String failure = assertThrows(ConnectorException.class, connector::commitTransaction).getMessage();
        assertTrue(failure, failure.contains("3 messages will come again") && logged(failure));
        assertEquals(numbers(1, 5), receive(connector, 5));
        connector.commitTransaction();
        assertTrue(connector.disconnect());
        assertEquals("", broker.receiver("d").receiveTextMessage());
    }

    @Test
    public void aStopWhileReconnectingLeavesTheClientIdFree() throws Exception {
        Random random = new Random(3);
        for (int round = 0; round < 12; ++round) {
            JmsConnector connector = broker.receiver("again");
            broker.cut();
            Thread.sleep(random.nextInt(200));
            assertTrue(connector.disconnect());
        }
        waitUntil("no connection is left", () -> broker.connections() == 0);
        Thread.sleep(300);
        assertEquals("none appears late", 0, broker.connections());
    }

    @Test
    public void anOutageIsNoBadMessage() throws Exception {
        JmsConnector connector = broker.receiver("");
        JmsConnector sender = broker.connector(broker.url(), "");
        assertTrue(sender.connectForOutput());
        JmsConnector stopped = broker.receiver("");
        broker.stop();
        for (int i = 0; i < 6; ++i) assertEquals("", connector.receiveTextMessage());
        long start = System.nanoTime();
        assertTrue(stopped.disconnect());
        assertTrue("an outage does not hold up a stop", System.nanoTime() - start < 500_000_000L);
        broker.start();
        waitUntil("sent", () -> sender.sendTextMessage("1", null));
        assertEquals(List.of(1), receive(connector, 1));
        waitUntil("told", () -> logged("was lost and is made again") && logged("is there again"));
        waitUntil("only the two that go on are connected", () -> broker.connections() == 2);
    }

    @Test
    public void aClientIdInUseIsWaitedForWhileReconnecting() throws Exception {
        JmsConnector connector = broker.receiver("id");
        broker.cut();
        Connection other = broker.connection();
        other.setClientID("id");
        other.start();
        waitUntil("refused", () -> logged("\"id\" (parameter clientID)"));
        assertEquals("", connector.receiveTextMessage());
        other.close();
        waitUntil("connected", () -> logged("is there again"));
        broker.sendNumbers(TOPIC, 1, 2);
        assertEquals(numbers(1, 2), receive(connector, 2));
    }

    @Test
    public void aForgottenConnectorMakesWayForItsClientIdAndIsCollected() throws Exception {
        JmsConnector forgotten = broker.receiver("id");
        JmsConnector next = broker.receiver("id");
        assertEquals("", forgotten.receiveTextMessage());
        broker.sendNumbers(TOPIC, 1, 2);
        assertEquals(numbers(1, 2), receive(next, 2));
        forgotten = null;
        next = null;
        broker.forgetConnectors();
        waitUntil("closed", () -> {
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
            for (; away < 600_000; away += pause) {
                pause = backoff.nextMillis();
                assertTrue(
                        away + " then " + pause, pause <= 100 + away * 0.3 && pause <= 30_000 && pause >= 75);
            }
            assertTrue("" + pause, pause >= 22_500);
        }
    }
}
