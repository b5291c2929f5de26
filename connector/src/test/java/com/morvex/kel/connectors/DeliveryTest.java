package com.morvex.kel.connectors;

import static org.junit.Assert.*;

import java.util.*;
import java.util.concurrent.CompletableFuture;
import java.util.concurrent.atomic.AtomicBoolean;
import org.apache.activemq.command.ActiveMQDestination;
import org.junit.*;

/** A host settles: nothing but its word acknowledges, and what it did not settle comes again. */
public class DeliveryTest extends BrokerFixture {
    /** Where messages come from, and how they are settled. */
    private enum Source {
        QUEUE_ACKNOWLEDGED(QUEUE, "", false),
        QUEUE_TRANSACTED(QUEUE, "", true),
        DURABLE(TOPIC, "d", false),
        TOPIC_ACKNOWLEDGED(TOPIC, null, false),
        TOPIC_TRANSACTED(TOPIC, null, true);

        final ActiveMQDestination destination;
        final String clientId;
        final boolean transacted;

        Source(ActiveMQDestination destination, String clientId, boolean transacted) {
            this.destination = destination;
            this.clientId = clientId;
            this.transacted = transacted;
        }
    }

    private static final List<Source> KEPT = List.of(Source.QUEUE_ACKNOWLEDGED, Source.QUEUE_TRANSACTED, Source.DURABLE);

    @Before
    public void settleByHost() {
        System.setProperty("kel.jms.settle", "host");
        System.setProperty("kel.jms.settleMillis", "60000");
    }

    private JmsConnector open(Source source) {
        System.setProperty("kel.jms.transacted", "" + source.transacted);
        if (source.clientId != null) return receiver(source.clientId);
        connectors.add(new JmsConnector("ConnectionFactory", "TOPIC", "t", false, null, null, null, CONTEXT_FACTORY, url(), "", ""));
        assertTrue(connectors.get(connectors.size() - 1).connectForInput(true));
        return connectors.get(connectors.size() - 1);
    }

    /** What waits for a successor, which takes it. */
    private void checkLeft(Source source, List<Integer> expected) {
        JmsConnector next = open(source);
        assertEquals(source + ": what is left", expected, receive(next, expected.size()));
        assertTrue(Delivery.settle());
        assertEquals("", next.receiveTextMessage());
        assertTrue(next.disconnect());
    }

    /** Long before the time that a receive waits. */
    private static void checkNothingAtOnce(JmsConnector connector) {
        long start = System.nanoTime();
        assertEquals("", connector.receiveTextMessage());
        assertTrue("at once", System.nanoTime() - start < 2_000_000_000L);
    }

    @Test
    public void onlyTheHostSettles() throws Exception {
        for (Source source : Source.values()) {
            JmsConnector connector = open(source);
            if (source.clientId == null) waitUntil("subscribed", () -> connections() > 0);
            sendNumbers(source.destination, 1, 5);
            assertEquals(numbers(1, 3), receive(connector, 3));
            assertEquals(3, Delivery.count());
            assertEquals("each has an ID", 3, Set.of(Delivery.taken()).size());
            assertTrue(Delivery.settle());
            assertEquals(0, Delivery.taken().length);
            assertEquals(numbers(4, 5), receive(connector, 2));
            connector.commitTransaction();
            assertEquals("", connector.receiveTextMessage());
            assertFalse("ended it is not yet", Delivery.isLost());
            assertTrue("the reader's own", connector.disconnect());
            assertTrue(Delivery.isLost());
            assertFalse(Delivery.settle());
            if (KEPT.contains(source)) checkLeft(source, numbers(4, 5));
        }
        assertEquals("", takeLog());
    }

    @Test
    public void theHostGetsItsTurn() throws Exception {
        System.setProperty("kel.jms.receiveTimeoutMillis", "4000");
        System.setProperty("kel.jms.settleAfter", "3");
        System.setProperty("kel.jms.settleMillis", "1000");
        sendNumbers(QUEUE, 1, 9);
        JmsConnector connector = receiver("");
        assertEquals(numbers(1, 3), receive(connector, 3));
        checkNothingAtOnce(connector);
        assertTrue(Delivery.settle());
        assertEquals(numbers(4, 4), receive(connector, 1));
        Thread.sleep(1_010);
        checkNothingAtOnce(connector);
        assertEquals(1, Delivery.count());
        assertTrue(Delivery.settle());
        assertEquals(numbers(5, 7), receive(connector, 3));
        assertTrue(Delivery.settle());
        assertEquals(numbers(8, 9), receive(connector, 2));
        checkNothingAtOnce(connector);
        assertTrue(Delivery.settle());
        long start = System.nanoTime();
        assertEquals("", connector.receiveTextMessage());
        assertTrue("waits with nothing in hand", System.nanoTime() - start > 3_900_000_000L);
        sendNumbers(QUEUE, 1, 1);
        assertEquals(numbers(1, 1), receive(connector, 1));
        broker.stop();
        waitUntil("lost", Delivery::isLost);
        checkNothingAtOnce(connector);
        assertEquals("on another thread there is nothing", 0, (int) CompletableFuture.supplyAsync(Delivery::count).join());
    }

    @Test
    public void withoutTheHostsWordNothingIsHeld() throws Exception {
        System.clearProperty("kel.jms.settle");
        sendNumbers(QUEUE, 1, 2);
        JmsConnector connector = receiver("");
        assertEquals(numbers(1, 2), receive(connector, 2));
        assertEquals(0, Delivery.count());
        assertTrue(Delivery.settle() && Delivery.forget() && !Delivery.isLost());
        assertNull(Delivery.refusal(0));
        assertTrue(connector.disconnect());
        assertEquals("acknowledged by the stop", 0, waiting(QUEUE));
        System.setProperty("kel.jms.settle", "server");
        assertThrows(ConnectorException.class, () -> receiver(""));
    }

    @Test
    public void aLostConnectionBringsAllOfItAgainAndNothingTwice() throws Exception {
        for (Source source : KEPT) {
            JmsConnector connector = open(source);
            sendNumbers(source.destination, 1, 6);
            assertEquals(numbers(1, 2), receive(connector, 2));
            assertTrue(Delivery.settle());
            assertEquals(numbers(3, 4), receive(connector, 2));
            Thread.sleep(200);   // an acknowledgement may be on its way
            cut();
            waitUntil("lost", Delivery::isLost);
            waitUntil("connected again", () -> JmsConnector.connectionState() == 0);
            for (int i = 0; i < 3; ++i) assertEquals("", connector.receiveTextMessage());
            if (source == Source.DURABLE) assertFalse(Delivery.forget());
            else assertFalse(Delivery.settle());
            assertEquals(source + "", numbers(3, 6), receive(connector, 4));
            assertTrue(Delivery.settle());
            assertTrue(connector.disconnect());
            String log = takeLog();
            assertTrue(log, log.contains("the last 2 messages handed on may come again") && log.lines().count() < 3);
            checkLeft(source, List.of());
        }
    }

    @Test
    public void whatIsForgottenComesAgainInItsPlace() throws Exception {
        for (Source source : Source.values()) {
            JmsConnector connector = open(source);
            sendNumbers(source.destination, 1, 5);
            assertEquals(numbers(1, 3), receive(connector, 3));
            assertTrue(Delivery.forget());
            assertEquals(0, Delivery.count());
            assertEquals(source + "", numbers(1, 5), receive(connector, 5));
            assertArrayEquals(new String[] {"true", "true", "true", "false", "false"}, Delivery.header("JMSRedelivered"));
            assertTrue(Delivery.settle());
            assertTrue(connector.disconnect());
            if (KEPT.contains(source)) checkLeft(source, List.of());
        }
        assertEquals("", takeLog());
    }

    @Test
    public void aStopWaitsForTheHostAndNoLonger() throws Exception {
        record Case(String does, boolean isClean, int least, int most, List<Integer> left) {}
        List<Case> cases = List.of(new Case("settle", true, 290, 2_500, List.of()), new Case("forget", true, 290, 2_500, numbers(1, 2)),
                new Case("disconnect", true, 290, 2_500, numbers(1, 2)), new Case("cut", true, 290, 2_500, numbers(1, 2)),
                new Case("nothing", false, 2_900, 6_000, numbers(1, 2)));
        for (Source source : KEPT) {
            for (Case each : cases) {
                if (!each.isClean && source == Source.QUEUE_ACKNOWLEDGED) continue;   // takes its time
                JmsConnector connector = open(source);
                sendNumbers(source.destination, 1, 2);
                assertEquals(numbers(1, 2), receive(connector, 2));
                assertEquals("", connector.receiveTextMessage());
                long start = System.nanoTime();
                var stop = CompletableFuture.supplyAsync(connector::disconnect);
                Thread.sleep(300);
                assertEquals("", connector.receiveTextMessage());
                assertFalse("there is time", stop.isDone() || Delivery.isLost());
                if (each.does.equals("settle")) assertTrue(Delivery.settle());
                if (each.does.equals("forget")) assertTrue(Delivery.forget());
                if (each.does.equals("cut")) cut();
                if (each.does.equals("cut")) waitUntil("lost", Delivery::isLost);
                if (each.does.equals("cut")) assertFalse(Delivery.settle());
                if (each.does.equals("disconnect")) assertTrue(connector.disconnect());
                assertEquals(each.does, each.isClean, stop.join());
                long millis = (System.nanoTime() - start) / 1_000_000;
                assertEquals(Set.of("disconnect", "nothing").contains(each.does) ? 2 : 0, Delivery.count());
                assertTrue(each.does + " " + millis, millis >= each.least && millis < each.most);
                assertEquals(each.does, Delivery.count() == 0, Delivery.settle());
                assertEquals(each.does, !each.isClean, takeLog().contains("will come again"));
                checkLeft(source, each.left);
            }
        }
    }

    /** Stops at any moment of a reader that takes and settles: what it settled never comes again, and nothing is lost. */
    @Test
    public void stopsAtAnyMomentRepeatNothingThatWasSettled() throws Exception {
        sendNumbers(QUEUE, 1, 3_000);
        System.setProperty("kel.jms.settleAfter", "7");
        Random random = new Random(11);
        List<Integer> settled = new ArrayList<>();
        for (int round = 0; settled.size() < 3_000; ++round) {
            JmsConnector connector = open(round % 2 == 0 ? Source.QUEUE_TRANSACTED : Source.QUEUE_ACKNOWLEDGED);
            Thread stopper = later(random.nextInt(15_000), () -> assertTrue(connector.disconnect()));
            List<Integer> taken = new ArrayList<>();
            while (stopper.isAlive()) {
                String text = connector.receiveTextMessage();
                if (!text.isEmpty()) taken.add(Integer.valueOf(text));
                if (text.isEmpty() && Delivery.settle()) settled.addAll(taken);
                if (text.isEmpty()) taken.clear();
            }
        }
        assertEquals("", takeLog());
        assertEquals(numbers(1, 3_000), settled);
    }

    @Test
    public void aSettlingThatFailsIsToldOnceAndOneThatHangsEndsInTime() throws Exception {
        JmsConnector failing = FakeProvider.connector("");
        assertTrue(failing.connectForInput(true));
        assertEquals("[false, 2]", FakeProvider.session);
        assertNull("a message without text", failing.receiveTextMessage());
        FakeProvider.failing = "Session.commit";
        assertFalse(Delivery.settle());
        assertEquals(0, Delivery.count());
        waitUntil("told", () -> logged("the last message handed on may come again: the commit failed: Session.commit"));
        waitUntil("connected again", () -> JmsConnector.connectionState() == 0);
        assertNull("goes on over the next connection", failing.receiveTextMessage());
        FakeProvider.failing = "Session.rollback";
        assertFalse(Delivery.forget());
        waitUntil("told", () -> logged("the messages could not be given back: Session.rollback"));
        assertEquals("", takeLog().lines().filter(line -> !line.contains("may come again")).findAny().orElse(""));
        failing.disconnect();

        System.setProperty("kel.jms.transacted", "true");
        JmsConnector hanging = FakeProvider.connector("Session.commit");
        assertTrue(hanging.connectForInput(true));
        assertEquals("[true, 2]", FakeProvider.session);
        assertNull("a message without text", hanging.receiveTextMessage());
        AtomicBoolean isClean = new AtomicBoolean(true);
        Thread stop = later(200_000, () -> {
            isClean.set(hanging.disconnect());
            FakeProvider.failing = "Session.commit";
            FakeProvider.until.countDown();
        });
        long start = System.nanoTime();
        assertFalse(Delivery.settle());
        stop.join();
        assertTrue(!isClean.get() && System.nanoTime() - start < 6_000_000_000L);
        assertTrue(takeLog().contains("A stop interrupted the commit; the last message handed on may come again."));
    }

    @Test
    public void refusedMessagesKeepTheirPlaces() throws Exception {
        send(QUEUE,
                session
                -> session.createTextMessage("1"),
                session -> session.createMapMessage(), session -> session.createTextMessage(""), session -> session.createTextMessage("2"));
        JmsConnector connector = receiver("");
        assertEquals("1", connector.receiveTextMessage());
        assertNull(connector.receiveTextMessage());
        assertNull(connector.receiveTextMessage());
        assertEquals("2", connector.receiveTextMessage());
        String[] refusals = {null, "it is a MapMessage, but the text formats take a TextMessage or a BytesMessage in UTF-8",
                "its body is empty", null, null};
        String[] ids = Arrays.copyOf(Delivery.taken(), 5);
        for (int i = 0; i < 5; ++i) {
            String expected = refusals[i] == null ? null : "The message " + ids[i] + " was refused: " + refusals[i] + ".";
            assertEquals(expected, Delivery.refusal(i));
        }
        assertEquals("the host tells of it", "", takeLog());
        assertTrue(Delivery.settle());
        waitUntil("they are dealt with", () -> waiting(QUEUE) == 0);
    }

    @Test
    public void aMessageThatFindsNoMemoryIsTakenAloneAndRefusedTheThirdTime() throws Exception {
        for (String text : new String[] {"1", "2", "huge", "3"}) send(QUEUE, session -> session.createTextMessage(text));
        JmsConnector connector = receiver("");
        assertTrue(connector.initInConverter(UnderFireTest.Converter.class.getName(), ""));
        List<String> settled = new ArrayList<>(), batch = new ArrayList<>();
        int largestAfter = 0;
        boolean hasFailed = false;
        for (long end = System.nanoTime() + 20_000_000_000L; !settled.contains("3") && System.nanoTime() < end;) {
            String[] row = connector.receiveCustomMessage();
            if (row == null) batch.add("refused: " + Delivery.refusal(Delivery.count() - 1));
            if (row != null && row.length == 3) batch.add(row[2]);
            assertEquals("one of the batch for each that counts", batch.size(), Delivery.count());
            if (hasFailed && !settled.contains("1") && !Delivery.isLost()) largestAfter = Math.max(largestAfter, batch.size());
            if (row == null || row.length == 3) continue;
            hasFailed |= Delivery.isLost();
            if (Delivery.settle()) settled.addAll(batch);
            batch.clear();
        }
        assertEquals(settled + "", 4, settled.size());
        assertTrue(settled.get(2), settled.get(2).contains("could not be read for want of memory 3 times and was left to the provider"));
        assertEquals("one at a time", 1, largestAfter);
        assertTrue(hasFailed && !takeLog().contains("3 times"));
    }
}
