package com.morvex.kel.connectors;

import java.util.concurrent.TimeUnit;
import java.util.concurrent.locks.ReentrantLock;
import javax.jms.Connection;
import javax.jms.Destination;
import javax.jms.JMSException;
import javax.jms.Message;
import javax.jms.MessageConsumer;
import javax.jms.MessageProducer;
import javax.jms.Session;

/**
 * One open connection and the session on it, from connecting to closing; never reopened.
 *
 * <p>A JMS session belongs to one thread at a time, so one lock guards session, consumer and producer. Only
 * {@link #close} comes from a thread of its own.
 */
final class Link {
    /** What the connection is for. */
    enum Purpose { CONSUME, BROWSE, PRODUCE }

    /** Acknowledging is a packet to the broker; over tcp one for each message would halve the rate. */
    private static final int ACKNOWLEDGE_EVERY = 100;

    /** How long closing waits for a call in progress, which the provider may hold up for ever. */
    private static final long LOCK_MILLIS = 1_000;

    private final ReentrantLock lock = new ReentrantLock();
    private final Connection connection;
    private final Session session;
    private final Destination destination;
    private final boolean transacted;
    private final MessageConsumer consumer;
    private final MessageProducer producer;
    private volatile boolean closing;

    // Guarded by lock: the messages handed on that the provider still counts as unread.
    private Message lastHandedOn;
    private int pending;

    Link(Connection connection, Session session, Destination destination, MessageConsumer consumer,
            MessageProducer producer) throws JMSException {
        this.connection = connection;
        this.session = session;
        this.destination = destination;
        this.consumer = consumer;
        this.producer = producer;
        this.transacted = session.getTransacted();
    }

    /**
     * The next message, or null when none came within the time or the link is being closed.
     *
     * <p>Acknowledging is cumulative, so what is due is acknowledged before anything is taken: never does it
     * reach a message that the caller does not have yet.
     */
    Message take(long waitMillis) throws JMSException {
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
        // Without the lock, so that close can end the wait at once by closing the connection. Nothing is
        // unacknowledged, so close finds nothing to do on the session that is used here meanwhile.
        Message message = consumer.receive(waitMillis);
        lock.lock();
        try {
            // A message that came while closing is not handed on and stays unacknowledged: it comes again.
            return message == null || closing ? null : handOn(message);
        } finally {
            lock.unlock();
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

    /** Commits what was taken since the last commit. A failure leaves it counted as pending. */
    void commit() throws JMSException {
        lock.lock();
        try {
            session.commit();
            forgetPending();
        } finally {
            lock.unlock();
        }
    }

    /** Makes a message of the session. */
    interface MessageMaker {
        Message make(Session session) throws Exception;
    }

    void send(MessageMaker maker) throws Exception {
        lock.lock();
        try {
            producer.send(maker.make(session));
        } finally {
            lock.unlock();
        }
    }

    Connection connection() { return connection; }

    Destination destination() { return destination; }

    boolean isConsuming() { return consumer != null; }

    boolean isClosing() { return closing; }

    /** Messages handed on that will come again when the connection ends now. */
    int pending() {
        lock.lock();
        try {
            return pending;
        } finally {
            lock.unlock();
        }
    }

    /** Acknowledges what was handed on (never commits), then closes; from any thread. */
    boolean disconnect() {
        closing = true;
        boolean locked = false;
        try {
            locked = lock.tryLock(LOCK_MILLIS, TimeUnit.MILLISECONDS);
            if (locked) acknowledge();
        } catch (JMSException e) {
            Log.warn("The last " + pending + " messages could not be acknowledged and will come again: "
                    + Log.reason(e) + ".", e);
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
        } finally {
            if (locked) lock.unlock();
        }
        return close();
    }

    private boolean close() {
        try {
            connection.close();
            return true;
        } catch (JMSException e) {
            Log.warn("The connection could not be closed cleanly: " + Log.reason(e) + ".", e);
            return false;
        }
    }
}
