package com.morvex.kel.connectors;

import javax.jms.Connection;

/**
 * One try to connect, on a daemon thread of its own: a provider's look-up, login or start may block for as
 * long as it likes. Whatever appears after the attempt was abandoned is closed.
 */
final class ConnectAttempt {
    /** Made beforehand, for when there is no memory to say more. */
    private static final ConnectorException UNEXPLAINED =
            new ConnectorException("Connecting failed, and there was no memory to say why.");

    private final LinkOpener opener;
    private final Thread thread;

    // Guarded by this.
    private boolean finished;
    private boolean abandoned;
    private Link link;
    private ConnectorException failure;
    private Connection unfinished;

    private ConnectAttempt(LinkOpener opener) {
        this.opener = opener;
        thread = new Thread(this::run, "kel-jms-connect");
        thread.setDaemon(true);
    }

    static ConnectAttempt start(LinkOpener opener) {
        ConnectAttempt attempt = new ConnectAttempt(opener);
        attempt.thread.start();
        return attempt;
    }

    /**
     * Waits for the link, which then is the caller's.
     *
     * @throws ConnectorException when connecting failed, took longer than the time or was abandoned
     */
    Link await(long millis) {
        boolean interrupted = false;
        synchronized (this) {
            long end = System.nanoTime() + millis * 1_000_000;
            try {
                for (long left = millis; left > 0 && !finished && !abandoned;) {
                    wait(left);
                    left = (end - System.nanoTime() + 999_999) / 1_000_000;
                }
            } catch (InterruptedException e) {
                interrupted = true;
            }
            if (failure != null) throw failure;
            if (abandoned) throw cancelled();
            if (finished) {
                Link mine = link;
                link = null;
                return mine;
            }
        }
        abandon();
        if (interrupted) {
            Thread.currentThread().interrupt();
            throw cancelled();
        }
        String late = "%s did not connect within %d ms (system property kel.jms.connectTimeoutMillis).";
        throw new ConnectorException(late.formatted(opener.settings().provider(), millis));
    }

    /** Whether the provider still has the thread. */
    synchronized boolean isRunning() { return !finished; }

    static ConnectorException cancelled() { return new ConnectorException("Connecting was cancelled."); }

    /** Gives the attempt up, from any thread, without waiting for it. */
    void abandon() {
        Connection late;
        Link unclaimed;
        synchronized (this) {
            abandoned = true;
            late = unfinished;
            unfinished = null;
            unclaimed = link;
            link = null;
            notifyAll();
        }
        // Most providers give up a blocking call on one of these two.
        thread.interrupt();
        if (late != null) Closer.inBackground(late);
        if (unclaimed != null) Closer.inBackground(unclaimed.connection());
    }

    private void run() {
        Link made = null;
        ConnectorException problem = UNEXPLAINED;
        try {
            made = opener.open(this::connected);
        } catch (ConnectorException e) {
            problem = e;
        } catch (Throwable e) {   // whatever it is, somebody waits for it
            problem = new ConnectorException("Connecting failed: " + Log.reason(e) + ".", e);
        } finally {
            finish(made, problem);
        }
    }

    private void finish(Link made, ConnectorException problem) {
        boolean isUnwanted;
        synchronized (this) {
            finished = true;
            unfinished = null;
            isUnwanted = abandoned && made != null;
            if (!abandoned) link = made;
            if (!abandoned && made == null) failure = problem;
            notifyAll();
        }
        if (isUnwanted) Closer.inBackground(made.connection());
    }

    private synchronized void connected(Connection connection) {
        if (abandoned) throw cancelled();
        unfinished = connection;
    }
}
