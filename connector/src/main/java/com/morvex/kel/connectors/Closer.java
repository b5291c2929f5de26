package com.morvex.kel.connectors;

import java.util.concurrent.TimeUnit;
import javax.jms.Connection;
import javax.jms.JMSException;
import javax.jms.QueueBrowser;

/** Closes a connection on a thread of its own, because a provider may wait for a broker that is gone. */
final class Closer {
    private static final long CLOSE_MILLIS = 5_000;

    private final Thread thread;
    private final long end = System.nanoTime() + TimeUnit.MILLISECONDS.toNanos(CLOSE_MILLIS);
    private boolean hasWarned;

    private Closer(Runnable work) {
        thread = new Thread(work, "kel-jms-close");
        thread.setDaemon(true);
    }

    /** Starts the closing and comes back at once. */
    static void inBackground(Connection connection) { start(connection, null, () -> { }); }

    /**
     * Starts the closing.
     *
     * @param browser closed before the connection; may be null
     * @param first done before both; it does not throw
     */
    static Closer start(Connection connection, QueueBrowser browser, Runnable first) {
        Closer closer = new Closer(() -> {
            first.run();
            if (browser != null) attempt(browser::close);
            attempt(connection::close);
        });
        closer.thread.start();
        return closer;
    }

    /** True when the closing ended within five seconds of its start, be it because the connection was gone. */
    boolean await() {
        try {
            long left = TimeUnit.NANOSECONDS.toMillis(end - System.nanoTime());
            if (left > 0) thread.join(left);
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
        }
        if (!thread.isAlive()) return true;
        warnOnce();
        return false;
    }

    private synchronized void warnOnce() {
        if (!hasWarned) Log.warn("The connection is still closing; that is left to the provider.");
        hasWarned = true;
    }

    private interface Closing {
        void run() throws JMSException;
    }

    private static void attempt(Closing closing) {
        try {
            closing.run();
        } catch (JMSException | RuntimeException | Error e) {
            Log.detail("The connection could not be closed cleanly.", e);
        }
    }
}
