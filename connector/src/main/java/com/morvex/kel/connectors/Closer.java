package com.morvex.kel.connectors;

import javax.jms.Connection;
import javax.jms.JMSException;
import javax.jms.QueueBrowser;

/** Closes connections on threads of their own, because a provider may wait for a broker that is gone. */
final class Closer {
    private static final long CLOSE_MILLIS = 5_000;

    private Closer() {}

    /** Starts the closing and comes back at once. */
    static void inBackground(Connection connection) { start(connection, null); }

    /**
     * True when the closing ended within five seconds; where it failed, the connection was gone already.
     *
     * @param browser closed first; may be null
     */
    static boolean close(Connection connection, QueueBrowser browser) {
        Thread thread = start(connection, browser);
        try {
            thread.join(CLOSE_MILLIS);
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
        }
        if (!thread.isAlive()) return true;
        Log.warn("The connection is still closing; that is left to the provider.");
        return false;
    }

    private static Thread start(Connection connection, QueueBrowser browser) {
        Thread thread = new Thread(() -> {
            if (browser != null) attempt(browser::close);
            attempt(connection::close);
        }, "kel-jms-close");
        thread.setDaemon(true);
        thread.start();
        return thread;
    }

    private interface Closing {
        void run() throws JMSException;
    }

    private static void attempt(Closing closing) {
        try {
            closing.run();
        } catch (JMSException | RuntimeException e) {
            Log.detail("The connection could not be closed cleanly.", e);
        }
    }
}
