package com.morvex.kel.connectors;

import javax.jms.Connection;
import javax.jms.JMSException;

/** Closes connections on threads of their own, because a provider may wait for a broker that is gone. */
final class Closer {
    private static final long CLOSE_MILLIS = 5_000;

    private Closer() {}

    /** Starts the closing and comes back at once. */
    static void inBackground(Connection connection) { start(connection); }

    /** True when the closing ended within five seconds; where it failed, the connection was gone already. */
    static boolean close(Connection connection) {
        Thread thread = start(connection);
        try {
            thread.join(CLOSE_MILLIS);
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
        }
        if (!thread.isAlive()) return true;
        Log.warn("The connection is still closing; that is left to the provider.");
        return false;
    }

    private static Thread start(Connection connection) {
        Thread thread = new Thread(() -> run(connection), "kel-jms-close");
        thread.setDaemon(true);
        thread.start();
        return thread;
    }

    private static void run(Connection connection) {
        try {
            connection.close();
        } catch (JMSException | RuntimeException e) {
            Log.detail("The connection could not be closed cleanly.", e);
        }
    }
}
