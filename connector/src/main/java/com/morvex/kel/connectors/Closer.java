package com.morvex.kel.connectors;

import javax.jms.Connection;
import javax.jms.JMSException;

/** Closes connections on threads of their own, because a provider may wait for a broker that is gone. */
final class Closer {
    private static final long CLOSE_MILLIS = 5_000;

    private Closer() {}

    /** Starts the closing and comes back at once. */
    static void inBackground(Connection connection) { start(new Closing(connection)); }

    /** True when the connection was closed without an error, and within five seconds. */
    static boolean close(Connection connection) {
        Closing closing = new Closing(connection);
        Thread thread = start(closing);
        try {
            thread.join(CLOSE_MILLIS);
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
        }
        if (thread.isAlive()) Log.warn("The connection is still closing; that is left to the provider.");
        return !thread.isAlive() && closing.succeeded;
    }

    private static Thread start(Closing closing) {
        Thread thread = new Thread(closing, "kel-jms-close");
        thread.setDaemon(true);
        thread.start();
        return thread;
    }

    private static final class Closing implements Runnable {
        private final Connection connection;
        private boolean succeeded;   // read after the thread has ended

        Closing(Connection connection) { this.connection = connection; }

        @Override
        public void run() {
            try {
                connection.close();
                succeeded = true;
            } catch (JMSException | RuntimeException e) {
                Log.detail("The connection could not be closed cleanly.", e);
            }
        }
    }
}
