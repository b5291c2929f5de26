package com.morvex.kel.connectors;

import static org.junit.Assert.*;

import java.util.List;
import java.util.concurrent.CompletableFuture;
import javax.jms.Connection;
import org.junit.Test;

/** A client ID, or a queue's messages, that another connection still holds. */
public class TakeoverTest extends BrokerFixture {
    @Test
    public void aClientIdInUseIsWaitedFor() throws Exception {
        Connection other = connection();
        other.setClientID("id");
        other.start();
        System.setProperty("kel.jms.clientIdWaitMillis", "900");
        checkFails("\"id\" (parameter clientID) must be free", connector(url(), "id").connectForInput(true));
        System.setProperty("kel.jms.clientIdWaitMillis", "20000");
        later(1_800_000, other::close);
        JmsConnector reader = receiver("id");
        assertTrue(takeLog().contains("it is waited for up to 20 s"));
        assertTrue("browsing needs no client ID", connector(url(), "id").connectForInput(false));
        assertEquals("and leaves its holder alone", "", takeLog());
        var present = List.copyOf(broker.getTransportConnectors().get(0).getConnections());
        Connection another = connection();   // open already, so that it is sooner than the reader
        for (var cut : present) cut.stop();
        another.setClientID("id");
        another.start();
        waitUntil("refused", () -> logged("\"id\" (parameter clientID)"));
        assertEquals("", reader.receiveTextMessage());
        another.close();
        waitUntil("connected", () -> logged("is there again"));
        sendNumbers(TOPIC, 1, 2);
        assertEquals(numbers(1, 2), receive(reader, 2));
    }

    @Test
    public void onlyAConnectorThatIsLeftAloneMakesWayForItsClientId() throws Exception {
        System.setProperty("kel.jms.clientIdWaitMillis", "1500");
        JmsConnector first = receiver("id");
        assertFalse("its reader is busy connecting", connector(url(), "id").connectForInput(true));
        assertTrue(takeLog().contains("must be free"));
        var newcomer = CompletableFuture.supplyAsync(() -> connector(url(), "id").connectForInput(true));
        while (!newcomer.isDone()) first.receiveTextMessage();
        assertFalse("as at the broker", newcomer.join());
        login("reader", "wrong");
        takeLog();
        checkFails("refuses the login", connector(url(), "id").connectForInput(true));
        login("reader", "secret");
        takeLog();
        sendNumbers(TOPIC, 1, 2);
        assertEquals("it goes on, whoever else failed", numbers(1, 2), receive(first, 2));
        first.commitTransaction();
        System.setProperty("kel.jms.clientIdWaitMillis", "20000");
        JmsConnector next = CompletableFuture.supplyAsync(() -> receiver("id")).join();   // nobody reads meanwhile
        assertTrue(takeLog().contains("nobody reads from it any more"));
        assertEquals("", first.receiveTextMessage());
        sendNumbers(TOPIC, 3, 4);
        assertEquals(numbers(3, 4), receive(next, 2));
        next = null;
        connectors.clear();
        long start = System.nanoTime();
        receiver("id");
        assertTrue("a forgotten one at once", System.nanoTime() - start < 3_000_000_000L);
        connectors.clear();
        first = null;
        waitUntil("closed", () -> {
            System.gc();
            return connections() == 0;
        });
    }

    @Test
    public void aSuccessorTakesOverWhatWasSentAhead() throws Exception {
        sendNumbers(QUEUE, 1, 10);
        JmsConnector first = receiver("");
        assertEquals(numbers(1, 3), receive(first, 3));
        first = null;
        connectors.clear();
        JmsConnector next = receiver("");
        assertEquals(1, connections());
        assertEquals("none waits for the collector, none comes twice", numbers(4, 10), receive(next, 7));
        connectors.clear();
        next = null;
        sendNumbers(QUEUE, 11, 12);
        JmsConnector elsewhere = CompletableFuture.supplyAsync(() -> receiver("")).join();
        assertEquals("also one that another thread reads from", 1, connections());
        JmsConnector beside = receiver("");
        assertEquals("one that is in use is let be", 2, connections());
        int last = 0;   // the last of the messages before may come again: nobody has said that it was dealt with
        for (int round = 0; round < 9 && last != 12; ++round) last = receive(elsewhere, 1).get(0);
        assertEquals(12, last);
        assertEquals("", beside.receiveTextMessage());
    }
}
