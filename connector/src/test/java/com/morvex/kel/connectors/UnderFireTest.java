package com.morvex.kel.connectors;

import static org.junit.Assert.*;

import java.util.*;
import java.util.concurrent.CompletableFuture;
import java.util.concurrent.CompletionException;
import java.util.concurrent.CountDownLatch;
import javax.jms.*;
import org.apache.activemq.command.ActiveMQQueue;
import org.junit.Test;

/** Whatever ends in the middle of a message, nothing is lost, nothing hangs, and one sentence says so. */
public class UnderFireTest extends BrokerFixture {
    /** Runs out of memory over some messages, leaves the thread interrupted after others. */
    public static class Converter implements MessageConverter {
        static final CountDownLatch inHand = new CountDownLatch(1);

        @Override
        public void init(String parameter) {}

        @Override
        public String[] toRow(Message message) throws Exception {
            String text = ((TextMessage) message).getText();
            if (text.startsWith("slow")) {
                inHand.countDown();
                Thread.sleep(500);
            }
            if (text.endsWith("huge")) throw new OutOfMemoryError("Java heap space");
            if (text.equals("hidden")) throw new RuntimeException(new OutOfMemoryError("Java heap space"));
            if (text.equals("interrupts")) Thread.currentThread().interrupt();
            return new String[] {null, null, text};
        }

        @Override
        public Message toMessage(String[] row, Session session) {
            return null;
        }
    }

    /** Whoever wants to know more of it gets another one. */
    private static final class Unexplainable extends Error {
        private static final long serialVersionUID = 1L;

        @Override
        public String getMessage() {
            throw new OutOfMemoryError("no memory to explain");
        }
    }

    private void sendTexts(Destination destination, String... texts) throws JMSException {
        for (String text : texts) send(destination, session -> session.createTextMessage(text));
    }

    /** What a converter's reader gets until the last text, repeats left out, "bad" for what is refused. */
    private static List<String> convertUntil(String last, JmsConnector connector) {
        Set<String> found = new LinkedHashSet<>();
        long end = System.nanoTime() + 30_000_000_000L;
        while (!found.contains(last) && System.nanoTime() < end) {
            String[] row = connector.receiveCustomMessage();
            if (row == null || row.length == 3) assertTrue(found.add(row == null ? "bad" : row[2]) || row != null);
        }
        return List.copyOf(found);
    }

    @Test
    public void aStopWhileAMessageIsInHandLosesNothingAndRepeatsNothingThatWasDealtWith() throws Exception {
        sendNumbers(QUEUE, 1, 1);
        JmsConnector busy = receiver("");
        assertEquals(numbers(1, 1), receive(busy, 1));
        assertFalse("from another thread", CompletableFuture.supplyAsync(busy::disconnect).join());
        assertTrue(takeLog().contains("the last message handed on will come again"));
        for (int round = 0; round < 2; ++round) {
            JmsConnector next = receiver("");
            assertEquals(numbers(1, 1), receive(next, 1));
            var stop = CompletableFuture.supplyAsync(next::disconnect);
            Thread.sleep(100);
            // Dealt with: by the next receive, or by the reader's own disconnect.
            if (round == 0) assertEquals("", next.receiveTextMessage());
            else assertTrue(next.disconnect());
            assertTrue(takeLog(), stop.join());
            assertEquals("", receiver("").receiveTextMessage());
            for (JmsConnector each : connectors) each.disconnect();
            sendNumbers(QUEUE, 1, 1);
        }
    }

    @Test
    public void aStopLeavesACommitTheTimeItNeeds() throws Exception {
        sendNumbers(TOPIC, 0, 0);
        JmsConnector connector = receiver("d");
        sendNumbers(TOPIC, 1, 2);
        assertEquals(numbers(1, 2), receive(connector, 2));
        var stop = CompletableFuture.supplyAsync(connector::disconnect);
        Thread.sleep(100);
        connector.commitTransaction();
        assertTrue(stop.join());
        assertEquals("", receiver("d").receiveTextMessage());
    }

    @Test
    public void aMessageIsNotToBlameForTooLittleMemoryUntilTheThirdTimeAndIsKept() throws Exception {
        for (String blamed : new String[] {"huge", "hidden"}) {
            sendTexts(QUEUE, "1", "2", blamed, "3");
            JmsConnector connector = receiver("");
            assertTrue(connector.initInConverter(Converter.class.getName(), ""));
            assertEquals(List.of("1", "2", "bad", "3"), convertUntil("3", connector));
            waitUntil("in the provider's keeping", () -> waiting(new ActiveMQQueue("ActiveMQ.DLQ")) == 1);
            String log = takeLog();
            assertTrue(log, log.contains("may come again: the message ID:"));
            assertTrue(
                    log, log.contains("could not be read for want of memory 3 times and was left to the provider") && log.contains("-Xmx"));
            connector.disconnect();
            receiveFrom(new ActiveMQQueue("ActiveMQ.DLQ"));
        }
        // In a transaction it would take others with it.
        JmsConnector durable = receiver("d");
        assertTrue(durable.initInConverter(Converter.class.getName(), ""));
        sendTexts(TOPIC, "1", "huge", "2");
        assertEquals(List.of("1", "bad", "2"), convertUntil("2", durable));
        assertTrue(logged("could not be read for want of memory 3 times and was refused"));
    }

    /** A server may commit after every call, also after one that answered "nothing". */
    @Test
    public void whatWasGivenBackIsNeitherCommittedNorAcknowledged() throws Exception {
        JmsConnector durable = receiver("d");
        assertTrue(durable.initInConverter(Converter.class.getName(), ""));
        sendTexts(TOPIC, "1", "huge", "2");
        List<String> found = new ArrayList<>();
        long end = System.nanoTime() + 20_000_000_000L;
        while (!found.contains("2") && System.nanoTime() < end) {
            String[] row = durable.receiveCustomMessage();
            if (row == null || row.length == 3) found.add(row == null ? "bad" : row[2]);
            try {
                durable.commitTransaction();
            } catch (CommitFailure e) {
                // comes again
            }
        }
        assertEquals(List.of("1", "bad", "2"), found);
        // The same where a stop meets it: the reader comes back, but without the message dealt with.
        sendTexts(QUEUE, "slow and huge");
        JmsConnector stopped = receiver("");
        assertTrue(stopped.initInConverter(Converter.class.getName(), ""));
        var stop = CompletableFuture.runAsync(() -> {
            while (Converter.inHand.getCount() > 0) Thread.onSpinWait();
            stopped.disconnect();
        });
        while (!stop.isDone()) stopped.receiveCustomMessage();
        stopped.disconnect();
        assertEquals("slow and huge", receiver("").receiveTextMessage());
    }

    private void receiveFrom(Destination destination) throws JMSException {
        Connection connection = connection();
        connection.start();
        var session = connection.createSession(false, Session.AUTO_ACKNOWLEDGE);
        assertNotNull(session.createConsumer(destination).receive(1_000));
        connection.close();
    }

    @Test
    public void whatNeverFitsIsGivenUpWithOneSentence() throws Exception {
        JmsConnector connector = FakeProvider.connector("");
        assertTrue(connector.connectForInput(true));
        long start = System.nanoTime();
        while (JmsConnector.connectionState() != 2 && System.nanoTime() - start < 30_000_000_000L) {
            waitUntil("connected or given up", () -> JmsConnector.connectionState() != 1);
            var loss = new JMSException("Unexpected error");
            loss.initCause(new OutOfMemoryError("Java heap space"));
            FakeProvider.listener.onException(loss);
        }
        assertTrue("not before it has lasted", System.nanoTime() - start > 9_000_000_000L);
        waitUntil("told", () -> logged("is given up: for 10 s the memory has not sufficed"));
        assertEquals("many losses, and little to read", 2, takeLog().lines().count());
        assertEquals("", connector.receiveTextMessage());
        assertTrue(connector.disconnect());
        assertEquals("over with it", 0, JmsConnector.connectionState());
    }

    @Test
    public void aThreadLeftInterruptedGoesOnReceiving() throws Exception {
        sendTexts(QUEUE, "interrupts", "1", "interrupts", "2");
        JmsConnector connector = receiver("");
        assertTrue(connector.initInConverter(Converter.class.getName(), ""));
        assertEquals(List.of("interrupts", "1", "2"), convertUntil("2", connector));
        assertEquals(
                "The converter " + Converter.class.getName() + " leaves its thread interrupted, which is cleared each time.", takeLog());
        cut();
        Thread.currentThread().interrupt();
        for (int i = 0; i < 3; ++i) connector.receiveCustomMessage();
        sendTexts(QUEUE, "3");
        assertTrue("also one that somebody else left so", convertUntil("3", connector).contains("3"));
    }

    @Test
    public void noErrorEndsReconnectingAndOneOutOfAReceiveIsNoBadMessage() throws Exception {
        JmsConnector connector = FakeProvider.connector("");
        assertTrue(connector.connectForInput(true));
        unloggable.set(new OutOfMemoryError("no memory for a sentence"));
        FakeProvider.listener.onException(new JMSException("gone"));
        FakeProvider.waitForCalls(FakeProvider.CREATE, 2);
        waitUntil("connected again", () -> JmsConnector.connectionState() == 0);
        FakeProvider.failing = "MessageConsumer.receiveNoWait";
        FakeProvider.failure = () -> new NoClassDefFoundError("some/Class");
        assertEquals("", connector.receiveTextMessage());
        FakeProvider.failing = FakeProvider.CREATE;
        FakeProvider.failure = () -> new OutOfMemoryError("unable to create native thread");
        waitUntil("each new reason once", () -> logged("unable to create native thread"));
        Thread.sleep(1_500);   // a shortage of threads for a while is no reason to give up
        FakeProvider.failing = "";
        waitUntil("connected again", () -> logged("is there again"));
        assertEquals(0, JmsConnector.connectionState());
        FakeProvider.failing = FakeProvider.CREATE;
        FakeProvider.failure = () -> new Unexplainable();
        FakeProvider.listener.onException(new JMSException("gone"));
        Thread.sleep(300);
        FakeProvider.failing = "";
        waitUntil("connected again", () -> JmsConnector.connectionState() == 0);
        connector.disconnect();
        // The ID of the message, which has no text, is a sender's.
        JmsConnector reader = FakeProvider.connector("");
        assertTrue(reader.connectForInput(true));
        assertNull(reader.receiveTextMessage());
        assertTrue(takeLog().contains("The message ID:\\u001B[2J\\u202E was refused"));
        reader.disconnect();
    }

    @Test
    public void aCommitThatAStopInterruptsSaysSoAndEndsInTime() throws Exception {
        JmsConnector connector = FakeProvider.connector("Session.commit");
        assertTrue(connector.connectForInput(true));
        assertNull("a message without text", connector.receiveTextMessage());
        takeLog();
        var commit = CompletableFuture.runAsync(connector::commitTransaction);
        FakeProvider.waitForCalls("Session.commit", 1);
        long start = System.nanoTime();
        assertFalse(connector.disconnect());
        assertTrue(System.nanoTime() - start < 5_000_000_000L);
        FakeProvider.failing = "Session.commit";
        FakeProvider.until.countDown();
        assertThrows(CompletionException.class, commit::join);
        String log = takeLog();
        assertTrue(log, log.contains("A stop interrupted the commit; the last message handed on may come again."));
    }

    @Test
    public void aStopEndsAlsoWhenTheReaderComesBackToACallThatHangs() throws Exception {
        JmsConnector connector = FakeProvider.connector("Session.commit");
        assertTrue(connector.connectForInput(true));
        assertNull("a message without text", connector.receiveTextMessage());
        var stop = CompletableFuture.supplyAsync(connector::disconnect);
        Thread.sleep(200);
        var commit = CompletableFuture.runAsync(connector::commitTransaction);
        long start = System.nanoTime();
        stop.join();
        assertTrue(System.nanoTime() - start < 9_000_000_000L);
        FakeProvider.until.countDown();
        commit.handle((done, failure) -> failure).join();
    }

    @Test
    public void batchesThatAreNeverCommittedAreToldOnce() throws Exception {
        JmsConnector connector = receiver("d");
        sendNumbers(TOPIC, 1, 23);
        assertEquals(numbers(1, 1), receive(connector, 1));
        connector.commitTransaction();
        assertEquals(numbers(2, 23), receive(connector, 22));
        String log = takeLog();
        assertTrue(log, log.startsWith("10 messages are handed on and not committed") && !log.contains("\n"));
    }

    @Test
    public void anOutageIsToldOnceAlsoOneThatTheClientHides() throws Exception {
        System.setProperty("kel.jms.remindMillis", "4500");
        String address = url().substring(0, url().indexOf('?'));
        JmsConnector told = connector("failover:(" + address + ")?maxReconnectAttempts=0", "");
        assertTrue(told.connectForInput(true));
        broker.stop();
        Thread.sleep(3_500);   // some attempts, of which each fails in one of two ways
        String log = takeLog();
        assertTrue(log, log.lines().count() <= 3 && log.contains("was lost and is made again"));
        assertTrue(log, log.contains("is not reachable: Connection refused") && !log.contains("at once"));
        waitUntil("reminded", () -> logged("There has been no connection to queue \"q\" for "));
        told.disconnect();
        takeLog();
        startBroker();
        JmsConnector hidden = connector("failover:(" + address + ")", "");
        assertTrue(hidden.connectForInput(true));
        assertEquals(0, JmsConnector.connectionState());
        broker.stop();
        waitUntil("told", () -> logged("was lost, which the provider's client keeps to itself"));
        waitUntil("reminded", () -> logged("There has been no connection to queue \"q\" for "));
        assertEquals(1, JmsConnector.connectionState());
        startBroker();
        waitUntil("told", () -> logged("is there again"));
        assertEquals(0, JmsConnector.connectionState());
    }
}
