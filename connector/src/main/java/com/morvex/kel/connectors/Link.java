package com.morvex.kel.connectors;

import java.util.concurrent.TimeUnit;
import java.util.concurrent.atomic.AtomicReference;
import java.util.concurrent.locks.LockSupport;
import java.util.concurrent.locks.ReentrantLock;
import java.util.function.Supplier;
import javax.jms.Connection;
import javax.jms.DeliveryMode;
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
 * commit, or to disconnect. Until then nothing acknowledges it. Where a host settles, only {@link #commit} and
 * {@link #rollBack} say so of a message, and the reader has all of them in hand until then.
 */
final class Link {
    /** Acknowledging is a packet to the broker; over tcp one for each message would halve the rate. */
    private static final int ACKNOWLEDGE_EVERY = 100;

    /** A host waits for no more with messages in hand; over tcp some are on their way. */
    private static final long LINGER_MILLIS = 2;

    /** How long closing waits for a call in progress, which the provider may hold up for ever. */
    private static final long LOCK_MILLIS = 1_000;

    /** How long closing waits for the reader to have dealt with the message that it has in hand. */
    private static final long RETURN_MILLIS = 3_000;
    private static final long RETURN_POLL_NANOS = 5_000_000;

    /** So many commits' worth of messages without a commit are no accident. */
    private static final int UNUSUAL_BATCHES = 10;

    /** Providers bound how often a message comes again, mostly by less, and let it wait a moment before. */
    private static final int MOST_GIVE_BACKS = 10;
    private static final long GIVE_BACK_MILLIS = 5_000;

    /** Makes a message of the link's session. */
    interface MessageMaker {
        Message make(Session session) throws JMSException;
    }

    private final ReentrantLock lock = new ReentrantLock();
    private final Connection connection;
    private final Session session;
    private final Destination destination;
    private final MessageConsumer consumer;
    private final MessageProducer producer;
    private final ConnectionLoss loss;
    private final boolean transacted;
    private final boolean byHost;
    private final Interruptible blocking = new Interruptible();
    private volatile boolean closing;
    private volatile boolean hasSettled;
    private volatile boolean givenBack;
    private volatile boolean gone;           // the closing has begun, after which nothing is settled
    private volatile QueueBrowser browser;   // in use

    /** Has the last message in hand; null when it was dealt with. Set under the lock, read without it. */
    private final AtomicReference<Thread> reader = new AtomicReference<>();

    // Guarded by lock.
    private Message lastHandedOn;   // of those that the provider still counts as unread
    private int pending;            // how many these are
    private Message ahead;          // taken, but not handed on yet
    private int largestBatch;
    private boolean hasWarned;

    private Closer closer;   // guarded by this

    /**
     * @param consumer null for a link that does not receive
     * @param producer null for a link that does not send
     * @param byHost a host settles what was handed on
     */
    Link(Connection connection, Session session, Destination destination, MessageConsumer consumer,
            MessageProducer producer, ConnectionLoss loss, boolean byHost) throws JMSException {
        this.connection = connection;
        this.session = session;
        this.destination = destination;
        this.consumer = consumer;
        this.producer = producer;
        this.loss = loss;
        this.byHost = byHost;
        transacted = session.getTransacted();
    }

    Connection connection() { return connection; }

    Destination destination() { return destination; }

    ConnectionLoss loss() { return loss; }

    boolean receives() { return consumer != null; }

    boolean isClosing() { return closing; }

    /** Whether the link is being closed or its connection was lost. */
    boolean hasEnded() { return closing || loss.hasHeard(); }

    /** Whether nothing that was handed on over the link can be settled any more; never waits. */
    boolean isLost() { return gone || givenBack || loss.hasHeard(); }

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
            if (!byHost) readerReturned();
            if (closing || givenBack) return null;
            if (pending >= (oneByOne ? 1 : ACKNOWLEDGE_EVERY)) acknowledge();
            Message message = ahead != null ? ahead : consumer.receiveNoWait();
            ahead = null;
            boolean isHeld = byHost && pending > 0;
            // With the lock: what comes now is settled together with the others, so it must be handed on.
            if (message == null && isHeld) message = consumer.receive(LINGER_MILLIS);
            if (message != null) return handOn(message);
            if (isHeld) return null;
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
     * failure, as after {@link #giveBack}, leaves it pending. Where a host settles, it comes from there.
     */
    void commit() throws JMSException {
        lock.lock();
        try {
            readerReturned();
            if (givenBack) throw new ConnectorException("a message of it was given back");
            if (transacted && pending > 0) {
                blocking.run(session::commit);
                largestBatch = Math.max(largestBatch, pending);
                forgetPending();
            } else {
                acknowledgePending();
            }
        } finally {
            lock.unlock();
        }
    }

    /** Has the provider take back what is pending; it comes again. While the link is closing that does the same. */
    void rollBack() throws JMSException {
        lock.lock();
        try {
            readerReturned();
            if (pending == 0 || closing) return;
            blocking.run(transacted ? session::rollback : session::recover);
            lastHandedOn = null;
            pending = 0;
        } finally {
            lock.unlock();
        }
    }

    /**
     * Has the provider take the message back until it keeps it elsewhere, as most do with one that comes again
     * too often. False when it goes on coming, or would take others with it; it then is in hand as before. Also
     * false, and of no meaning, when the link ended meanwhile.
     */
    boolean keepAside(Message message) throws JMSException {
        lock.lock();
        try {
            String id = message.getJMSMessageID();
            if (id == null || pending != 1) return false;
            for (int i = 0; i < MOST_GIVE_BACKS && !hasEnded(); ++i) {
                if (transacted) session.rollback();
                else session.recover();
                Message next = consumer.receive(GIVE_BACK_MILLIS);
                if (hasEnded()) return false;
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
            int priority = Replay.priorityOf(message);
            blocking.run(() -> producer.send(message, DeliveryMode.PERSISTENT, priority, Message.DEFAULT_TIME_TO_LIVE));
        } finally {
            lock.unlock();
        }
    }

    /**
     * From now on nothing that is pending is acknowledged or committed: what the reader has in hand was not
     * dealt with, although it comes back. Waits for nothing and needs no memory.
     */
    void giveBack() { givenBack = true; }

    /** The reader comes back to the connector, which may have another link or none by now. */
    void readerIsBack() {
        if (hasInHand(Thread.currentThread())) readerReturned();
    }

    /** Whether the reader has not come back with the message that it was given last. */
    boolean hasMessageInHand() { return reader.get() != null; }

    /** So many messages, for sentences. */
    static String count(int messages) {
        return messages == 1 ? "the last message handed on" : "the last " + messages + " messages handed on";
    }

    /** How many messages were handed on that come again when the connection ends now. */
    int pending() { return uninterrupted(this::pendingNow); }

    /** Whether the link ever acknowledged or committed a message; never waits. */
    boolean hasSettled() { return hasSettled; }

    /**
     * Acknowledges what was handed on and dealt with, but never commits, and closes; true when nothing went
     * wrong. Of several calls each waits for the end, within ten seconds.
     */
    boolean disconnect() {
        closing = true;   // before the lock, so that no further message is taken while waiting for it
        readerIsBack();
        return uninterrupted(() -> {
            Closer begun = closer(null);
            if (begun != null) return begun.await();
            boolean isSafe = awaitReturn();
            return closer(isSafe ? this::acknowledgeAtEnd : () -> {}).await() && isSafe;
        });
    }

    /** Closes without acknowledging anything; the count of messages handed on that will come again. */
    int drop() {
        closing = true;
        return uninterrupted(() -> {
            int again = pendingNow();
            closer(() -> {}).await();
            return again;
        });
    }

    /** The calling thread may be interrupted for reasons of its own, which it learns of behind the action. */
    private static <T> T uninterrupted(Supplier<T> action) {
        boolean wasInterrupted = Thread.interrupted();
        try {
            return action.get();
        } finally {
            if (wasInterrupted) Thread.currentThread().interrupt();
        }
    }

    /** True when the reader has no message in hand; false, and a warning, when it has not come back in time. */
    private boolean awaitReturn() {
        if (!lockOrInterrupt()) {
            if (consumer != null) {
                Log.warn("The provider does not return from a call, so the connection is closed meanwhile; the"
                        + " messages handed on last may come again.");
            }
            return false;
        }
        int inHand = pending;
        lock.unlock();   // nothing is handed on from here on, since the link is closing
        long end = System.nanoTime() + TimeUnit.MILLISECONDS.toNanos(RETURN_MILLIS);
        while (hasMessageInHand() && System.nanoTime() < end) LockSupport.parkNanos(RETURN_POLL_NANOS);
        if (!hasMessageInHand()) return true;
        Log.warn("The connection is closed while the last message handed on is still being worked on; " + count(inHand)
                + " will come again.");
        return false;
    }

    /** Most providers give up a blocking call on an interruption. */
    private boolean lockOrInterrupt() { return lockForClosing() || (blocking.interrupt() && lockForClosing()); }

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

    /** The one closing of this link, which begins with the step where nobody has begun it; null: do not begin. */
    private synchronized Closer closer(Closer.Step first) {
        if (first != null) gone = true;
        if (closer == null && first != null) closer = Closer.start(connection, browser, first);
        return closer;
    }

    private void acknowledgeAtEnd() throws JMSException {
        if (!lockOrInterrupt()) throw new ConnectorException("the provider does not return from a call");
        try {
            acknowledge();
        } catch (JMSException | RuntimeException e) {
            if (consumer == null) return;
            Log.warn("The messages handed on last may come again, since acknowledging them failed: " + Log.reason(e)
                    + ".");
            throw e;
        } finally {
            lock.unlock();
        }
    }

    private boolean hasInHand(Thread thread) { return reader.get() == thread; }

    private void readerReturned() { reader.lazySet(null); }

    private Message handOn(Message message) {
        lastHandedOn = message;
        reader.lazySet(Thread.currentThread());
        ++pending;
        if (transacted && !byHost && !hasWarned) warnOfUncommitted();
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
        if (!byHost) acknowledgePending();
    }

    private void acknowledgePending() throws JMSException {
        if (transacted || pending == 0 || givenBack) return;
        blocking.run(lastHandedOn::acknowledge);
        forgetPending();
    }

    private void forgetPending() {
        lastHandedOn = null;
        pending = 0;
        if (!hasSettled) hasSettled = true;
    }
}
