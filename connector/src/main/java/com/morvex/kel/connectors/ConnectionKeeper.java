package com.morvex.kel.connectors;

import javax.jms.InvalidClientIDException;

/**
 * Keeps a connector connected: opens its link, notices its loss, opens another, ends it.
 *
 * <p>Its states are new, connected, reconnecting and disconnected, the last for good. Every step to another
 * one raises the generation, and a link that a thread brings is taken only by the generation that asked for
 * it: a late one is closed. It knows nothing of the connector, so that a forgotten connector can be collected
 * and its connection closed.
 */
final class ConnectionKeeper {
    /** A broker may need a moment to see that a crashed process has left its client ID. */
    private static final long GRACE_MILLIS = 2_000;
    private static final long GRACE_PAUSE_MILLIS = 100;

    /** A link that fails sooner was none: the pauses between reconnects go on growing. */
    private static final long PROVEN_NANOS = 1_000_000_000L;

    private final Tuning tuning;
    private LinkOpener opener;

    // Guarded by this; the link is also read without, on the way of every message.
    private volatile Link link;
    private long generation;
    private boolean connected;
    private boolean disconnected;
    private boolean displaced;
    private ConnectAttempt attempt;
    private Backoff backoff = new Backoff();
    private long openedAt;

    ConnectionKeeper(Tuning tuning) { this.tuning = tuning; }

    /** Opens the first link within the time limit, or throws a ConnectorException. */
    void connect(LinkOpener linkOpener) {
        long mine;
        synchronized (this) {
            if (disconnected) throw new ConnectorException("Connecting was cancelled by an earlier disconnect.");
            if (connected) throw new ConnectorException("The connector is connected already.");
            opener = linkOpener;
            mine = ++generation;
        }
        if (opener.usesClientId()) ClientIds.take(opener.settings(), this);
        boolean installed = false;
        try {
            installed = install(mine, openFirst(mine));
        } finally {
            if (!installed) releaseClientId();
        }
        if (!installed) throw ConnectAttempt.cancelled();
    }

    /** The open link; null when there is none, after waiting for one, or none will be any more. */
    Link await(long millis) {
        Link open = link;
        if (open != null) return open;
        synchronized (this) {
            if (!connected && !disconnected) throw new ConnectorException("The connector is not connected.");
            if (!disconnected || displaced) pause(generation, millis);
            return link;
        }
    }

    /** Replaces a link that no longer works; does nothing when that is under way already. */
    void lost(Link failed, Exception cause) {
        long mine;
        synchronized (this) {
            if (link != failed) return;
            link = null;
            mine = ++generation;
            if (System.nanoTime() - openedAt > PROVEN_NANOS) backoff = new Backoff();
        }
        // The caller may be a thread of the provider, which must not wait for the closing. A host shows by
        // the thread's name that it reconnects.
        Thread worker = new Thread(() -> reconnect(mine, failed, cause), "kel-jms-reconnect");
        worker.setDaemon(true);
        worker.start();
    }

    /** Disconnects for another connector; the reader does not know of it, so receives go on waiting. */
    void displace() {
        synchronized (this) { displaced = true; }
        disconnect();
    }

    /** Ends whatever is open or under way, from any thread; true when it ended cleanly. */
    boolean disconnect() {
        Link open;
        ConnectAttempt underWay;
        synchronized (this) {
            disconnected = true;
            ++generation;
            open = link;
            link = null;
            underWay = attempt;
            notifyAll();
        }
        if (underWay != null) underWay.abandon();
        boolean clean = open == null || open.disconnect();
        releaseClientId();
        return clean;
    }

    private void releaseClientId() {
        LinkOpener used;
        synchronized (this) { used = opener; }
        if (used != null && used.usesClientId()) ClientIds.release(used.settings(), this);
    }

    private Link openFirst(long mine) {
        long end = System.nanoTime() + GRACE_MILLIS * 1_000_000;
        ConnectorException reason = null;
        while (true) {
            try {
                return open(mine);
            } catch (ConnectorException e) {
                // Of several failures the one that names the client ID says most.
                if (!ConnectorException.stemsFrom(reason, InvalidClientIDException.class)) reason = e;
                boolean again = e.isPassing() && System.nanoTime() < end;
                if (!again || !pause(mine, GRACE_PAUSE_MILLIS)) throw e.isPassing() ? reason : e;
            }
        }
    }

    private void reconnect(long mine, Link failed, Exception cause) {
        String destination = opener.settings().destination();
        // Closed first, because it may still hold the client ID.
        int again = failed.drop();
        String repeats = again == 0 ? "" : "; the last " + again + " messages handed on will come again";
        String sentence = "The connection to %s was lost and is made again%s: %s.";
        Log.warn(sentence.formatted(destination, repeats, Log.reason(cause)), cause);
        String lastProblem = null;
        while (pause(mine, backoff.nextMillis())) {
            try {
                Link next = open(mine);
                if (install(mine, next)) Log.info("The connection to " + destination + " is there again.");
                return;
            } catch (ConnectorException e) {
                // The same sentence again and again would bury everything else.
                if (!e.getMessage().equals(lastProblem)) Log.warn(e.getMessage(), e);
                lastProblem = e.getMessage();
            }
        }
    }

    private Link open(long mine) {
        ConnectAttempt started;
        synchronized (this) {
            if (generation != mine) throw ConnectAttempt.cancelled();
            if (attempt != null && attempt.isRunning()) {
                // A provider that is deaf to interruption must not collect a blocked thread for each attempt.
                throw new ConnectorException(
                        opener.settings().provider() + " has still not returned from the attempt before.");
            }
            started = ConnectAttempt.start(opener);
            attempt = started;
        }
        return started.await(tuning.connectTimeoutMillis());
    }

    private boolean install(long mine, Link opened) {
        boolean wanted;
        synchronized (this) {
            wanted = generation == mine;
            if (wanted) {
                link = opened;
                connected = true;
                openedAt = System.nanoTime();
                notifyAll();
            }
        }
        if (wanted) {
            opened.loss().handleWith(cause -> lost(opened, cause));
        } else {
            opened.drop();
        }
        return wanted;
    }

    /** Waits until a link is there, at most the time; false, and at once, when the generation ends. */
    private synchronized boolean pause(long mine, long millis) {
        long end = System.nanoTime() + millis * 1_000_000;
        try {
            for (long left = millis; left > 0 && generation == mine && link == null;) {
                wait(left);
                left = (end - System.nanoTime() + 999_999) / 1_000_000;
            }
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
            return false;
        }
        return generation == mine;
    }
}
