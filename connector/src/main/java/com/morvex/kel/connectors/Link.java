package com.morvex.kel.connectors;

import java.util.concurrent.TimeUnit;
import java.util.concurrent.locks.Condition;
import java.util.concurrent.locks.ReentrantLock;
import javax.jms.Connection;
import javax.jms.Destination;
import javax.jms.JMSException;
import javax.jms.Message;
import javax.jms.MessageConsumer;
import javax.jms.MessageProducer;
import javax.jms.QueueBrowser;
import javax.jms.Session;

/**
 * One open connection and the session on it, from connecting to closing; never reopened.
 *
 * <p>A JMS session belongs to one thread at a time, so one lock guards session, consumer and producer.
 * {@link #disconnect} and {@link #drop} may come from any thread, everything else from the reading one.
 *
 * <p>A message that was handed on is dealt with when the reading thread comes back: to take the next, to
 * commit, or to disconnect. Until then nothing acknowledges it.
 */
final class Link {
    /** Acknowledging is a packet to the broker; over tcp one for each message would halve the rate. */
    private static final int ACKNOWLEDGE_EVERY = 100;

    /** How long closing waits for a call in progress, which the provider may hold up for ever. */
    private static final long LOCK_MILLIS = 1_000;

    /** How long closing waits for the reader to have dealt with the message that it has in hand. */
    private static final long RETURN_MILLIS = 3_000;

    /** So many commits' worth of messages without a commit are no accident. */
    private static final int UNUSUAL_BATCHES = 10;

    /** Providers bound how often a message comes again, mostly by less, and let it wait a moment before. */
    private static final int MOST_GIVE_BACKS = 10;
    private static final long GIVE_BACK_MILLIS = 5_000;

    /** Makes a message of the link's session. */
    interface MessageMaker {
        Message make(Session session) throws JMSException;
    }

    private interface SessionCall {
        void run() throws JMSException;
    }

    private final ReentrantLock lock = new ReentrantLock();
    private final Condition returned = lock.newCondition();
    private final Connection connection;
    private final Session session;
    private final Destination destination;
    private final MessageConsumer consumer;
    private final MessageProducer producer;
    private final ConnectionLoss loss;
    private final boolean transacted;
    private final Interruptible blocking = new Interruptible();
    private volatile boolean closing;
    private volatile boolean hasHandedOn;
    private volatile QueueBrowser browser;   // in use

    // Guarded by lock.
    private Message lastHandedOn;   // of those that the provider still counts as unread
    private int pending;            // how many these are
    private volatile Thread reader; // has the last one in hand; null when it was dealt with
    private Message ahead;          // taken, but not handed on yet
    private int largestBatch;
    private boolean hasWarned;
    private Closer closer;

    /**
     * @param consumer null for a link that does not receive
     * @param producer null for a link that does not send
     */
    Link(Connection connection, Session session, Destination destination, MessageConsumer consumer,
            MessageProducer producer, ConnectionLoss loss) throws JMSException {
        this.connection = connection;
        this.session = session;
        this.destination = destination;
        this.consumer = consumer;
        this.producer = producer;
        this.loss = loss;
        transacted = session.getTransacted();
    }

    Connection connection() { return connection; }

    Destination destination() { return destination; }

    ConnectionLoss loss() { return loss; }

    boolean receives() { return consumer != null; }

    boolean isClosing() { return closing; }

    /** Whether the link is being closed or its connection was lost. */
    boolean hasEnded() { return closing || loss.hasHeard(); }

    /**
     * Has the browser closed before the connection: with some providers it waits for ever once the connection
     * is gone.
     *
     * @param inUse null when it no longer is
     */
    void closeWithIt(QueueBrowser inUse) { browser = inUse; }

    /**
     * The next message, or null when none came within the time or the link is being closed.
     *
     * <p>Acknowledging is cumulative, so what is due is acknowledged before anything is taken: it never
     * reaches a message that the caller does not have yet.
     *
     * @param oneByOne acknowledge whatever there is, although it is not many yet
     */
    Message take(long waitMillis, boolean oneByOne) throws JMSException {
        if (consumer == null) throw new ConnectorException("The connector is not connected for receiving.");
        lock.lock();
        try {
            readerReturned();
            if (closing) return null;
            if (pending >= (oneByOne ? 1 : ACKNOWLEDGE_EVERY)) acknowledge();
            Message message = ahead != null ? ahead : consumer.receiveNoWait();
            ahead = null;
            if (message != null) return handOn(message);
            acknowledge();
        } finally {
            lock.unlock();
        }
        // Without the lock, so that disconnect can end the wait at once by closing the connection. Nothing is
        // unacknowledged, so it has nothing to do on the session that is in use here.
        Message message = consumer.receive(waitMillis);
        lock.lock();
        try {
            // Closing: the message stays unacknowledged and comes again, so it must not be handed on now.
            return message == null || closing ? null : handOn(message);
        } finally {
            lock.unlock();
        }
    }

    /**
     * Commits what was taken since the last commit, if anything; without a transaction, acknowledges it. A
     * failure leaves it pending.
     */
    void commit() throws JMSException {
        lock.lock();
        try {
            readerReturned();
            if (transacted && pending > 0) {
                blocking.run(session::commit);
                largestBatch = Math.max(largestBatch, pending);
                forgetPending();
            } else {
                acknowledge();
            }
        } finally {
            lock.unlock();
        }
    }

    /**
     * Has the provider take the message back until it keeps it elsewhere, as most do with one that comes again
     * too often. False when it goes on coming, or would take others with it; it then is in hand as before. A
     * close meanwhile leaves it with the provider.
     */
    boolean keepAside(Message message) throws JMSException {
        lock.lock();
        try {
            String id = message.getJMSMessageID();
            if (id == null || pending != 1) return false;
            for (int i = 0; i < MOST_GIVE_BACKS && !closing; ++i) {
                if (transacted) session.rollback();
                else session.recover();
                Message next = consumer.receive(GIVE_BACK_MILLIS);
                if (closing) return true;
                if (next == null || !id.equals(next.getJMSMessageID())) {
                    forgetPending();
                    ahead = next;
                    return true;
                }
                lastHandedOn = next;
            }
            return false;
        } finally {
            lock.unlock();
        }
    }

    /** Sends what the maker makes; a ConnectorException when the message could not be made. */
    void send(MessageMaker maker) throws JMSException {
        if (producer == null) throw new ConnectorException("The connector is not connected for sending.");
        lock.lock();
        try {
            Message message;
            try {
                message = maker.make(session);
            } catch (JMSException e) {
                throw new ConnectorException("The message could not be made: " + Log.reason(e), e);
            }
            producer.send(message);
        } finally {
            lock.unlock();
        }
    }

    /** So many messages, for sentences. */
    static String count(int messages) {
        return messages == 1 ? "the last message handed on" : "the last " + messages + " messages handed on";
    }

    /** The reader comes back to the connector, which may have another link or none by now. */
    void readerIsBack() {
        if (reader != Thread.currentThread()) return;   // without the lock, which a hanging close may have
        lock.lock();
        try {
            readerReturned();
        } finally {
            lock.unlock();
        }
    }

    /** How many messages were handed on that come again when the connection ends now. */
    int pending() {
        lock.lock();
        try {
            return pending;
        } finally {
            lock.unlock();
        }
    }

    /** Whether the link ever handed a message on; never waits. */
    boolean hasHandedOn() { return hasHandedOn; }

    /**
     * Acknowledges what was handed on and dealt with, but never commits, and closes; true when nothing went
     * wrong. Of several calls each waits for the end, within ten seconds.
     */
    boolean disconnect() {
        closing = true;   // before the lock, so that no further message is taken while waiting for it
        boolean isSafe = awaitReturn();
        return closer(isSafe ? this::acknowledgeAtEnd : () -> { }).await() && isSafe;
    }

    /** Closes without acknowledging anything; the count of messages handed on that will come again. */
    int drop() {
        closing = true;
        int again = pendingNow();
        closer(() -> { }).await();
        return again;
    }

    /** True when the reader has no message in hand; false, and a warning, when it has not come back in time. */
    private boolean awaitReturn() {
        // Most providers give up a blocking call on an interruption.
        if (!lockForClosing() && !(blocking.interrupt() && lockForClosing())) {
            if (consumer != null) {
                Log.warn("The provider does not return from a call, so the connection is closed meanwhile; the"
                        + " messages handed on last may come again.");
            }
            return false;
        }
        try {
            if (reader == Thread.currentThread()) readerReturned();
            long left = TimeUnit.MILLISECONDS.toNanos(RETURN_MILLIS);
            while (reader != null && left > 0) left = returned.awaitNanos(left);
            if (reader == null) return true;
            Log.warn("The connection is closed while the last message handed on is still being worked on; "
                    + count(pending) + " will come again.");
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
        } finally {
            lock.unlock();
        }
        return false;
    }

    /** 0 while the provider holds up a call. */
    private int pendingNow() {
        if (!lockForClosing()) return 0;
        try {
            return pending;
        } finally {
            lock.unlock();
        }
    }

    private boolean lockForClosing() {
        try {
            return lock.tryLock(LOCK_MILLIS, TimeUnit.MILLISECONDS);
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
            return false;
        }
    }

    /** The one closing of this link, which begins with the action where nobody has begun it yet. */
    private synchronized Closer closer(Runnable first) {
        if (closer == null) closer = Closer.start(connection, browser, first);
        return closer;
    }

    private void acknowledgeAtEnd() {
        lock.lock();
        try {
            acknowledge();
        } catch (JMSException | RuntimeException e) {
            if (consumer == null) return;
            Log.warn("The messages handed on last may come again, since acknowledging them failed: "
                    + Log.reason(e) + ".");
        } finally {
            lock.unlock();
        }
    }

    private void readerReturned() {
        reader = null;
        returned.signalAll();
    }

    private Message handOn(Message message) {
        lastHandedOn = message;
        reader = Thread.currentThread();
        if (!hasHandedOn) hasHandedOn = true;
        ++pending;
        if (transacted && !hasWarned) warnOfUncommitted();
        return message;
    }

    private void warnOfUncommitted() {
        int usual = largestBatch > 0 ? largestBatch : ACKNOWLEDGE_EVERY;
        if (pending < UNUSUAL_BATCHES * usual) return;
        hasWarned = true;
        String sentence = "%d messages are handed on and not committed; they all come again after a stop. A commit"
                + " needs the count of all messages, also of those passed over, to be a multiple of batchsize; with"
                + " batchsize 1 each is committed.";
        Log.warn(sentence.formatted(pending));
    }

    private void acknowledge() throws JMSException {
        if (transacted || pending == 0) return;
        blocking.run(lastHandedOn::acknowledge);
        forgetPending();
    }

    private void forgetPending() {
        lastHandedOn = null;
        pending = 0;
    }

    /** A call of the provider that may never return, and that another thread may interrupt. */
    private static final class Interruptible {
        private Thread inside;
        private boolean interrupted;

        void run(SessionCall call) throws JMSException {
            synchronized (this) { inside = Thread.currentThread(); }
            try {
                call.run();
            } finally {
                synchronized (this) {
                    inside = null;
                    // It was meant for the call, not for what the thread does next.
                    if (interrupted) Thread.interrupted();
                    interrupted = false;
                }
            }
        }

        /** False when no thread is inside. */
        synchronized boolean interrupt() {
            if (inside == null) return false;
            interrupted = true;
            inside.interrupt();
            return true;
        }
    }
}
