package com.morvex.kel.connectors;

import java.util.concurrent.TimeUnit;
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
 */
final class Link {
    /** Acknowledging is a packet to the broker; over tcp one for each message would halve the rate. */
    private static final int ACKNOWLEDGE_EVERY = 100;

    /** How long closing waits for a call in progress, which the provider may hold up for ever. */
    private static final long LOCK_MILLIS = 1_000;

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
    private volatile boolean closing;
    private volatile QueueBrowser browser;   // in use

    // Guarded by lock: the messages handed on that the provider still counts as unread.
    private Message lastHandedOn;
    private int pending;

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
     */
    Message take(long waitMillis) throws JMSException {
        if (consumer == null) throw new ConnectorException("The connector is not connected for receiving.");
        lock.lock();
        try {
            if (closing) return null;
            if (pending >= ACKNOWLEDGE_EVERY) acknowledge();
            Message message = consumer.receiveNoWait();
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
            // Closing: the message stays unacknowledged and comes again, so it must not be handed on now. Not
            // closing: a disconnect gets the lock after this, and acknowledges it with the others.
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
            if (transacted && pending > 0) {
                session.commit();
                forgetPending();
            } else {
                acknowledge();
            }
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

    /** How many messages were handed on that come again when the connection ends now. */
    int pending() {
        lock.lock();
        try {
            return pending;
        } finally {
            lock.unlock();
        }
    }

    /** Acknowledges what was handed on, but never commits, and closes; true when nothing went wrong. */
    boolean disconnect() {
        closing = true;   // before the lock, so that no further message is taken while waiting for it
        String problem = null;
        if (lockForClosing()) {
            try {
                acknowledge();
            } catch (JMSException | RuntimeException e) {
                problem = Log.reason(e);
            } finally {
                lock.unlock();
            }
        } else {
            problem = "the provider does not return from a call";
        }
        boolean closed = Closer.close(connection, browser);
        if (problem == null) return closed;
        if (consumer != null)
            Log.warn("The messages handed on last may come again, since closing failed: " + problem + ".");
        return false;
    }

    /** Closes without acknowledging anything; the count of messages handed on that will come again. */
    int drop() {
        closing = true;
        int again = 0;
        if (lockForClosing()) {
            again = pending;
            lock.unlock();
        }
        Closer.close(connection, browser);
        return again;
    }

    private boolean lockForClosing() {
        try {
            return lock.tryLock(LOCK_MILLIS, TimeUnit.MILLISECONDS);
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
            return false;
        }
    }

    private Message handOn(Message message) {
        lastHandedOn = message;
        ++pending;
        return message;
    }

    private void acknowledge() throws JMSException {
        if (transacted || pending == 0) return;
        lastHandedOn.acknowledge();
        forgetPending();
    }

    private void forgetPending() {
        lastHandedOn = null;
        pending = 0;
    }
}
