package com.morvex.kel.connectors;

import static org.junit.Assert.*;

import java.util.*;
import org.junit.Test;

/** Stopping, acknowledging, committing and coming back. */
public class LifecycleTest extends BrokerFixture {
    @Test
    public void stopEndsAWaitAtOnce() {
        System.setProperty("kel.jms.receiveTimeoutMillis", "20000");
        for (String url : new String[] {url(), "vm://tests?create=false"}) {
            JmsConnector connector = connector(url, "");
            assertTrue(connector.connectForInput(true));
            long start = System.nanoTime();
            later(100_000, () -> assertTrue(connector.disconnect()));
            assertEquals("", connector.receiveTextMessage());
            assertEquals("a stopped connector has nothing waiting", "", connector.receiveTextMessage());
            assertTrue("a second stop is harmless", connector.disconnect());
            assertTrue(System.nanoTime() - start < 2_000_000_000L);
        }
        assertEquals("", takeLog());
    }

    @Test
    public void cleanStopsAtAnyMomentRepeatAndLoseNothing() throws Exception {
        sendNumbers(QUEUE, 1, 50);
        JmsConnector first = receiver("");
        List<Integer> found = new ArrayList<>(receive(first, 7));
        assertTrue(first.disconnect());
        later(0, () -> {
            for (int i = 51; i <= 3_000; i += 50) {
                sendNumbers(QUEUE, i, i + 49);
                Thread.sleep(3);
            }
        });
        Random random = new Random(7);
        while (found.size() < 3_000) {
            JmsConnector connector = receiver("");
            Thread stopper = later(random.nextInt(15_000), () -> assertTrue(connector.disconnect()));
            while (stopper.isAlive()) {
                String text = connector.receiveTextMessage();
                if (!text.isEmpty()) found.add(Integer.valueOf(text));
            }
        }
        assertEquals("", takeLog());
        for (int i = 0; i < found.size(); ++i) assertEquals("in order, none missing, none twice", i + 1, (int) found.get(i));
    }

    @Test
    public void aCutConnectionRepeatsOnlyWhatWasNotAcknowledged() throws Exception {
        sendNumbers(QUEUE, 1, 190);
        JmsConnector connector = receiver("");
        var counts = broker.getRegionBroker().getDestinationMap().get(QUEUE).getDestinationStatistics();
        // With everything at hand no receive has to wait, which would acknowledge what is due.
        waitUntil("sent out", () -> counts.getDispatched().getCount() == 190);
        Thread.sleep(200);
        List<Integer> found = new ArrayList<>(receive(connector, 150));
        // What the client has acknowledged may be on its way yet, and would get lost with the connection.
        waitUntil("acknowledged by hundreds", () -> counts.getDequeues().getCount() == 100);
        cut();
        waitUntil("the loss is told", () -> logged("the last 50 messages handed on may come again"));
        found.addAll(receive(connector, 90));
        assertEquals("a hundred are acknowledged, fifty come again", 240, found.size());
        assertEquals(numbers(1, 190), found.stream().distinct().sorted().toList());
        assertEquals("", connector.receiveTextMessage());
        waitUntil("acknowledged before waiting", () -> counts.getDequeues().getCount() == 190);
    }

    @Test
    public void aFailedCommitSaysHowManyComeAgain() throws Exception {
        JmsConnector connector = receiver("d");
        connector.commitTransaction();
        sendNumbers(TOPIC, 1, 5);
        assertEquals(numbers(1, 3), receive(connector, 3));
        cut();
        assertThrows(CommitFailure.class, connector::commitTransaction);
        waitUntil("told", () -> logged("the last 3 messages handed on may come again"));
        assertEquals(numbers(1, 5), receive(connector, 5));
        assertEquals("waiting acknowledges, but commits nothing", "", connector.receiveTextMessage());
        connector.commitTransaction();
        assertTrue(connector.disconnect());
        assertEquals("", receiver("d").receiveTextMessage());
    }

    @Test
    public void aStopWhileReconnectingLeavesTheClientIdFree() throws Exception {
        Random random = new Random(3);
        for (int round = 0; round < 12; ++round) {
            JmsConnector connector = receiver("again");
            cut();
            Thread.sleep(random.nextInt(200));
            assertTrue(connector.disconnect());
        }
        waitUntil("no connection is left", () -> connections() == 0);
        Thread.sleep(300);
        assertEquals("none appears late", 0, connections());
    }

    @Test
    public void anOutageIsNoBadMessage() throws Exception {
        JmsConnector connector = receiver("");
        JmsConnector sender = connector(url(), "");
        assertTrue(sender.connectForOutput());
        JmsConnector stopped = receiver("");
        broker.stop();
        for (int i = 0; i < 6; ++i) assertEquals("", connector.receiveTextMessage());
        long start = System.nanoTime();
        assertTrue(stopped.disconnect());
        assertTrue("an outage does not hold up a stop", System.nanoTime() - start < 500_000_000L);
        startBroker();
        waitUntil("sent", () -> sender.sendTextMessage("1", null));
        assertEquals(List.of(1), receive(connector, 1));
        waitUntil("told", () -> logged("was lost and is made again") && logged("is there again"));
        waitUntil("only the two that go on are connected", () -> connections() == 2);
    }

    @Test
    public void pausesGrowWithTheOutage() {
        for (int round = 0; round < 200; ++round) {
            Backoff backoff = new Backoff();
            long pause = 0;
            for (long away = 0; away < 600_000; away += pause) {
                pause = backoff.nextMillis();
                assertTrue(away + " then " + pause, pause <= 100 + away * 0.3 && pause <= 5_000 && pause >= 75);
            }
            assertTrue("" + pause, pause >= 3_750);
        }
    }
}
