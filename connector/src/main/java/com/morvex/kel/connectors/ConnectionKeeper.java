package com.morvex.kel.connectors;

import java.lang.ref.WeakReference;
import java.util.concurrent.TimeUnit;
import java.util.concurrent.atomic.AtomicLong;
import javax.jms.InvalidClientIDException;

/**
 * Keeps a connector connected: opens its link, notices its loss, opens another, ends it.
 *
 * <p>Its states are new, connected, reconnecting and disconnected, the last for good. Every step to another
 * one raises the generation, and a link that a thread brings is taken only by the generation that asked for
 * it: a late one is closed. It only knows the connector weakly, so that a forgotten connector can be collected
 * and its connection closed.
 */
final class ConnectionKeeper {
    /** A broker that hangs up while it is connected to may mean something that passes. */
    private static final long GRACE_MILLIS = 2_000;
    private static final long FIRST_PAUSE_MILLIS = 100;
    private static final long CLIENT_ID_PAUSE_MILLIS = 500;

    /** A reader calls at least four times a second, unless it is busy with a message. */
    private static final long SILENT_NANOS = TimeUnit.SECONDS.toNanos(5);

    /** A link that fails sooner was none: the pauses between reconnects go on growing. */
    private static final long PROVEN_NANOS = TimeUnit.SECONDS.toNanos(1);

    private static final long WATCH_MILLIS = 1_000;

    private final Tuning tuning;
    private final WeakReference<Object> owner;
    private final Thread reader = Thread.currentThread();   // by the contract, the one that connects
    private final AtomicLong calls = new AtomicLong();      // begun and ended: odd during a call
    private LinkOpener opener;

    // Guarded by this; the link is also read without, on the way of every message.
    private volatile Link link;
    private Link closing;
    private long generation;
    private boolean connected;
    private boolean disconnected;
    private boolean displaced;
    private boolean gaveUp;
    private ConnectAttempt attempt;
    private Runnable unstarted;   // a reconnect for which there was no thread
    private Backoff backoff = new Backoff();
    private long openedAt;
    private int lossesForMemory;  // in a row, with no message between them

    /** @param owner the connector, which is known weakly */
    ConnectionKeeper(Tuning tuning, Object owner) {
        this.tuning = tuning;
        this.owner = new WeakReference<>(owner);
    }

    /** Opens the first link within the time limit, or throws a ConnectorException. */
    void connect(LinkOpener linkOpener) {
        long mine;
        synchronized (this) {
            if (disconnected) throw new ConnectorException("Connecting was cancelled by an earlier disconnect.");
            if (connected) throw new ConnectorException("The connector is connected already.");
            opener = linkOpener;
            mine = ++generation;
        }
        if (opener.receives()) OpenConnectors.closeForgotten(this);
        if (!install(mine, openFirst(mine))) throw ConnectAttempt.cancelled();
    }

    /** The open link; null when there is none, after waiting for one, or none will be any more. */
    Link await(long millis) {
        Link open = link;
        if (open != null) return open;
        synchronized (this) {
            if (!connected && !disconnected) throw new ConnectorException("The connector is not connected.");
            startWorker();
            if (!disconnected || displaced || gaveUp) pause(generation, millis);
            return link;
        }
    }

    /** The reader's calls; without them for a while the connector counts as left alone. */
    void enters() { calls.lazySet(calls.getPlain() + 1); }

    void leaves() { calls.lazySet(calls.getPlain() + 1); }

    /** Replaces a link that no longer works; does nothing when that is under way already. */
    void lost(Link failed, Throwable cause) {
        synchronized (this) {
            if (link != failed) return;
            link = null;
            long mine = ++generation;
            if (System.nanoTime() - openedAt > PROVEN_NANOS) backoff = new Backoff();
            if (failed.hasHandedOn()) lossesForMemory = 0;
            countLossForMemory(cause);
            // The caller may be a thread of the provider, which must not wait for the closing.
            unstarted = () -> reconnect(mine, failed, cause);
            startWorker();
        }
    }

    /** Whether it should be connected and is not, or as far as can be told is not. */
    boolean isWithoutConnection() {
        Link open = link;
        return open == null || HiddenLoss.of(open.connection());
    }

    synchronized boolean hasGivenUp() { return gaveUp; }

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
            if (link != null) closing = link;
            open = closing;   // also of an earlier call, which then has an end for both
            link = null;
            unstarted = null;
            underWay = attempt;
            notifyAll();
        }
        OpenConnectors.remove(this);
        if (underWay != null) underWay.abandon();
        return open == null || open.disconnect();
    }

    /** Whether the other one, made earlier on the same thread, may be what this one replaces. */
    boolean mayFollow(ConnectionKeeper other) {
        return other != this && other.reader == reader && other.settings().isSameSource(settings());
    }

    /** Whether the other one holds the client ID that this one connects with. */
    boolean wantsClientIdOf(ConnectionKeeper other) {
        return other != this && other.opener.usesClientId() && opener.usesClientId()
                && other.settings().isSameClient(settings());
    }

    boolean isForgotten() { return owner.refersTo(null); }

    private ConnectionSettings settings() { return opener.settings(); }

    private Link openFirst(long mine) {
        ConnectorException reason = null;
        long began = System.nanoTime();
        ClientIdWait clientId = null;
        while (true) {
            try {
                return open(mine);
            } catch (ConnectorException e) {
                boolean isTaken = ConnectorException.stemsFrom(e, InvalidClientIDException.class);
                // Of several failures the one that names the client ID says most.
                if (reason == null || isTaken) reason = e;
                if (!e.isPassing()) throw e;
                if (isTaken && clientId == null) clientId = new ClientIdWait();
                long limit = clientId != null ? tuning.clientIdWaitMillis() : GRACE_MILLIS;
                boolean again = System.nanoTime() - began < TimeUnit.MILLISECONDS.toNanos(limit);
                if (clientId != null) clientId.goesOn(again);
                if (!again || !pause(mine, clientId != null ? clientId.nextMillis() : FIRST_PAUSE_MILLIS)) throw reason;
            }
        }
    }

    /** A broker may need a while to see that a process has left its client ID. */
    private final class ClientIdWait {
        private final ConnectionKeeper holder = OpenConnectors.holderFor(ConnectionKeeper.this);
        private final long callsThen = holder == null ? 0 : holder.calls.get();
        private final long began = System.nanoTime();
        private long pause = FIRST_PAUSE_MILLIS;
        private boolean hasTold;

        ClientIdWait() {
            if (holder != null) System.gc();   // only the collector knows whether it is forgotten
        }

        void goesOn(boolean again) {
            if (holder != null && isLeftAlone()) {
                Log.warn("The connection with the client ID \"" + settings().clientId() + "\" is closed, because"
                        + " another connector of this process needs it and nobody reads from it any more.");
                holder.displace();
            } else if (again && !hasTold && System.nanoTime() - began > TimeUnit.SECONDS.toNanos(1)) {
                hasTold = true;
                String sentence = "The client ID \"%s\" (parameter clientID) is still in use at the broker; it is waited"
                        + " for up to %d s (system property kel.jms.clientIdWaitMillis).";
                Log.warn(sentence.formatted(settings().clientId(), tuning.clientIdWaitMillis() / 1_000));
            }
        }

        long nextMillis() {
            long next = pause;
            pause = Math.min(CLIENT_ID_PAUSE_MILLIS, 2 * pause);
            return next;
        }

        private boolean isLeftAlone() {
            if (holder.isForgotten()) return true;
            boolean isSilent = callsThen % 2 == 0 && holder.calls.get() == callsThen;
            return isSilent && System.nanoTime() - began > SILENT_NANOS;
        }
    }

    /** Guarded by this. */
    private void startWorker() {
        if (unstarted == null) return;
        try {
            Thread worker = new Thread(unstarted, "kel-jms-reconnect");
            worker.setDaemon(true);
            worker.start();
            unstarted = null;
        } catch (Throwable e) {
            // No memory or no thread: the reader tries again with each of its calls.
            Log.detail("There is no thread to reconnect on.", e);
        }
    }

    private void reconnect(long mine, Link failed, Throwable cause) {
        Outage told = null;
        Throwable reason = cause;
        boolean dropped = false;
        // Whatever is thrown in a round, an Error too, ends the round and nothing else.
        while (isCurrent(mine)) {
            try {
                if (!dropped) {
                    dropped = true;
                    // Closed first, because it may still hold the client ID.
                    told = begun(failed.drop(), cause);
                }
                if (givesUp(mine, reason)) return;
                if (!pause(mine, backoff.nextMillis())) return;
                if (told != null) told.remind();
                Link next = open(mine);
                if (install(mine, next) && told != null) told.ends();
                return;
            } catch (Throwable e) {
                reason = e;
                countLossForMemory(e);
                if (told != null && isCurrent(mine)) tell(told, e);
            }
        }
    }

    private synchronized void countLossForMemory(Throwable cause) {
        lossesForMemory = MemoryShortage.isBehind(cause) ? lossesForMemory + 1 : 0;
    }

    private static void tell(Outage told, Throwable failure) {
        try {
            told.goesOn(failure);
        } catch (Throwable e) {
            // There is no memory to say so either.
        }
    }

    private Outage begun(int again, Throwable cause) {
        // "may", because an acknowledgement or a commit may have arrived whose confirmation did not
        String repeats = again == 0 ? "" : "; " + Link.count(again) + " may come again";
        // The connector's own sentence says more than what led to it.
        String reason = cause instanceof ConnectorException ? Log.reason(cause)
                : MemoryShortage.isBehind(cause) ? MemoryShortage.remedy(cause) : Log.rootReason(cause);
        String sentence = "The connection to " + settings().destination() + " was lost and is made again" + repeats;
        Log.detail(sentence, cause);
        return new Outage(settings().destination(), sentence, reason);
    }

    /** A message that does not fit would end every further connection just so. */
    private boolean givesUp(long mine, Throwable cause) {
        synchronized (this) {
            if (generation != mine || lossesForMemory < MemoryShortage.MOST_TRIES) return false;
        }
        // Said before the state is seen, on which a host may end its process.
        String sentence = "The connection to %s is given up: %d times in a row the memory did not suffice for what the"
                + " provider sends, before a message could be read: %s. The limit of what a broker takes is its"
                + " wireFormat.maxFrameSize.";
        Log.warn(sentence.formatted(settings().destination(), MemoryShortage.MOST_TRIES, MemoryShortage.remedy(cause)));
        synchronized (this) {
            gaveUp = true;
            disconnected = true;
            ++generation;
            notifyAll();
        }
        return true;
    }

    private Link open(long mine) {
        ConnectAttempt started;
        synchronized (this) {
            if (generation != mine) throw ConnectAttempt.cancelled();
            if (attempt != null && attempt.isRunning()) {
                // A provider that is deaf to interruption must not collect a blocked thread for each attempt.
                throw new ConnectorException(
                        settings().provider() + " has still not returned from the attempt before.");
            }
            started = ConnectAttempt.start(opener);
            attempt = started;
        }
        return started.await(tuning.connectTimeoutMillis());
    }

    private boolean install(long mine, Link opened) {
        boolean wanted;
        boolean isFirst;
        synchronized (this) {
            wanted = generation == mine;
            isFirst = !connected;
            if (wanted) {
                link = opened;
                connected = true;
                openedAt = System.nanoTime();
                notifyAll();
            }
        }
        if (wanted) {
            opened.loss().handleWith(cause -> lost(opened, cause));
            if (isFirst && opened.receives()) startWatch();
        } else {
            opened.drop();
        }
        return wanted;
    }

    private void startWatch() {
        OpenConnectors.add(this);
        Thread watch = new Thread(this::watch, "kel-jms-watch");
        watch.setDaemon(true);
        watch.start();
    }

    /** Tells of a loss that the provider's client keeps to itself. */
    private void watch() {
        Outage hidden = null;
        boolean wasHidden = false;   // seen once: a loss that the connector is told of may look so for a moment
        while (pauseUnlessDisconnected(WATCH_MILLIS)) {
            try {
                Link open = link;
                boolean isHidden = open != null && !open.hasEnded() && HiddenLoss.of(open.connection());
                if (isHidden && hidden == null) {
                    if (wasHidden) hidden = hiddenOutage();
                } else if (isHidden) {
                    hidden.remind();
                } else if (hidden != null) {
                    if (open != null) hidden.ends();
                    hidden = null;
                }
                wasHidden = isHidden;
            } catch (Throwable e) {
                // The next look may find more memory.
            }
        }
    }

    private Outage hiddenOutage() {
        String destination = settings().destination();
        String sentence = "The connection to " + destination + " was lost, which the provider's client keeps to itself";
        return new Outage(destination, sentence, "it tries to make it again");
    }

    private synchronized boolean isCurrent(long mine) { return generation == mine; }

    private synchronized boolean pauseUnlessDisconnected(long millis) {
        waitFor(millis, () -> !disconnected);
        return !disconnected;
    }

    /** Waits until a link is there, at most the time; false, and at once, when the generation ends. */
    private synchronized boolean pause(long mine, long millis) {
        waitFor(millis, () -> generation == mine && link == null);
        return generation == mine;
    }

    private interface Condition {
        boolean holds();
    }

    /** Guarded by this. An interruption, which is nobody's way to end a connector, does not end it. */
    private void waitFor(long millis, Condition goingOn) {
        long end = System.nanoTime() + TimeUnit.MILLISECONDS.toNanos(millis);
        for (long left = millis; left > 0 && goingOn.holds();) {
            try {
                wait(left);
            } catch (InterruptedException e) {
                // cleared with that
            }
            left = (end - System.nanoTime() + 999_999) / 1_000_000;
        }
    }
}
