package com.morvex.kel.connectors;

import java.lang.ref.WeakReference;
import java.util.concurrent.TimeUnit;
import java.util.concurrent.atomic.AtomicLong;
import java.util.function.BooleanSupplier;
import javax.jms.InvalidClientIDException;
import javax.jms.JMSException;

/**
 * Keeps a connector connected: opens its link, notices its loss, opens another, ends it.
 *
 * <p>Every step raises the generation, and a link that a thread brings is taken only by the generation that
 * asked for it: a late one is closed. It knows the connector only weakly, so that a forgotten connector can be
 * collected and its connection closed.
 */
final class ConnectionKeeper {
    /** Of these the last three are for good. */
    private enum State {
        NEW,
        CONNECTED,   // also while a lost connection is made again
        DISPLACED,   // for another connector; the reader does not know of it and goes on waiting
        GIVEN_UP,    // the reader goes on waiting here too
        DISCONNECTED
    }

    /** A broker that hangs up while it is connected to may mean something that passes. */
    private static final long GRACE_MILLIS = 2_000;
    private static final long GRACE_PAUSE_MILLIS = 100;

    /** A link that fails sooner was none: the outage goes on, and the pauses between reconnects go on growing. */
    private static final long PROVEN_NANOS = TimeUnit.SECONDS.toNanos(1);

    /** A shortage of memory that lasts as long, and ends every link, will not pass. */
    private static final long GIVE_UP_NANOS = TimeUnit.SECONDS.toNanos(10);

    private static final long WATCH_MILLIS = 1_000;

    private final Tuning tuning;
    private final WeakReference<Object> owner;
    private final Thread reader = Thread.currentThread();   // by the contract, the one that connects
    private final AtomicLong calls = new AtomicLong();

    // Guarded by this; the link is also read without, on the way of every message.
    private volatile Link link;
    private Link closing;
    private State state = State.NEW;
    private long generation;
    private LinkOpener opener;
    private ConnectAttempt attempt;
    private Reconnect unstarted;   // for which there was no thread
    private Backoff backoff = new Backoff();
    private long openedAt;
    private int memoryLosses;   // in a row, without progress
    private long memoryLossesSince;

    private final Object telling = new Object();
    private Outage outage;   // guarded by telling; until the link that ends it is proven

    /** @param owner the connector, which is known weakly */
    ConnectionKeeper(Tuning tuning, Object owner) {
        this.tuning = tuning;
        this.owner = new WeakReference<>(owner);
    }

    /** Opens the first link within the time limit, or throws a ConnectorException. */
    void connect(LinkOpener linkOpener) {
        long mine;
        synchronized (this) {
            if (state == State.CONNECTED) throw new ConnectorException("The connector is connected already.");
            if (state != State.NEW) throw new ConnectorException("Connecting was cancelled by an earlier disconnect.");
            opener = linkOpener;
            mine = ++generation;
        }
        if (opener.receives()) OpenConnectors.closeForgotten(this);
        if (!install(mine, openFirst(mine))) throw ConnectAttempt.cancelled();
        startWatch();
    }

    /** The open link; null when there is none, after waiting for one, or none will be any more. */
    Link await(long millis) {
        Link open = link;
        if (open != null) return open;
        synchronized (this) {
            if (state == State.NEW) throw new ConnectorException("The connector is not connected.");
            startReconnect();
            if (state != State.DISCONNECTED) pause(generation, millis);
            return link;
        }
    }

    /** The reader's calls begin and end so; without them for a while the connector counts as left alone. */
    void enters() { calls.lazySet(calls.getPlain() + 1); }

    void leaves() { calls.lazySet(calls.getPlain() + 1); }

    /** How many calls were begun and ended: odd during one. */
    long calls() { return calls.get(); }

    /** Replaces a link that no longer works; does nothing when that is under way already. */
    void lost(Link failed, Throwable cause) {
        synchronized (this) {
            if (link != failed) return;
            boolean isProven = System.nanoTime() - openedAt > PROVEN_NANOS;
            // What needs memory comes first: without it the link stays, and the next call finds it out again.
            Backoff pauses = isProven ? new Backoff() : backoff;
            Reconnect work = new Reconnect(this, generation + 1, failed, cause);
            if (failed.hasSettled()) memoryLosses = 0;
            countMemoryLoss(cause);
            backoff = pauses;
            unstarted = work;
            link = null;
            ++generation;
            // The caller may be a thread of the provider, which must not wait for the closing.
            startReconnect();
        }
    }

    /** Whether it should be connected and is not, or as far as can be told is not. */
    boolean isWithoutConnection() {
        Link open = link;
        return open == null || HiddenLoss.of(open.connection());
    }

    synchronized boolean hasGivenUp() { return state == State.GIVEN_UP; }

    synchronized boolean isDisconnected() { return state == State.DISCONNECTED; }

    boolean hasMessageInHand() {
        Link open = link;
        return open != null && open.hasMessageInHand();
    }

    /** Disconnects for another connector. */
    void displace() { end(State.DISPLACED, Link::disconnect); }

    /** Ends whatever is open or under way, from any thread; true when it ended cleanly. */
    boolean disconnect() { return end(State.DISCONNECTED, Link::disconnect); }

    /** Disconnects a connector that nobody has: only on its reader's thread was its last message dealt with. */
    void endForgotten() {
        boolean isReader = reader == Thread.currentThread();
        end(State.DISCONNECTED, isReader ? Link::disconnect : forgotten -> forgotten.drop() == 0);
    }

    private interface Ending {
        boolean of(Link link);
    }

    private boolean end(State last, Ending ending) {
        Link open;
        ConnectAttempt underWay;
        synchronized (this) {
            state = last;
            ++generation;
            if (link != null) closing = link;
            open = closing;   // also of an earlier call, which then has an end for both
            link = null;
            unstarted = null;
            underWay = attempt;
            OpenConnectors.remove(this);
            notifyAll();
        }
        if (underWay != null) underWay.abandon();
        return open == null || ending.of(open);
    }

    /** Whether this one may be there in place of the other. */
    boolean mayFollow(ConnectionKeeper other) { return other != this && other.settings().isSameSource(settings()); }

    /** Whether the other one holds the client ID that this one connects with. */
    boolean wantsClientIdOf(ConnectionKeeper other) {
        return other != this && other.opener.usesClientId() && opener.usesClientId()
                && other.settings().isSameClient(settings());
    }

    boolean isReadBy(Thread thread) { return reader == thread; }

    boolean isForgotten() { return owner.refersTo(null); }

    private ConnectionSettings settings() { return opener.settings(); }

    private Link openFirst(long mine) {
        ConnectorException reason = null;
        ClientIdWait clientId = null;
        long graceEnd = System.nanoTime() + TimeUnit.MILLISECONDS.toNanos(GRACE_MILLIS);
        while (true) {
            try {
                return open(mine);
            } catch (ConnectorException e) {
                if (!e.isPassing()) throw e;
                boolean isTaken = ConnectorException.stemsFrom(e, InvalidClientIDException.class);
                // Of several failures the one that names the client ID says most.
                if (reason == null || isTaken) reason = e;
                if (isTaken && clientId == null) clientId = new ClientIdWait(this, settings(), tuning);
                boolean isOver = clientId != null ? clientId.isOver() : System.nanoTime() > graceEnd;
                if (isOver) throw reason;
                if (!pause(mine, clientId != null ? clientId.nextMillis() : GRACE_PAUSE_MILLIS)) throw reason;
            }
        }
    }

    /** Guarded by this. */
    private void startReconnect() {
        if (unstarted == null) return;
        try {
            start(unstarted, "kel-jms-reconnect");
            unstarted = null;
        } catch (Throwable e) {
            // No memory or no thread: the reader tries again with each of its calls.
            Log.detail("There is no thread to reconnect on.", e);
        }
    }

    private static void start(Runnable work, String name) {
        Thread thread = new Thread(work, name);
        thread.setDaemon(true);
        thread.start();
    }

    // ---- the steps of a Reconnect

    synchronized boolean isAt(long mine) { return generation == mine; }

    boolean pauseBeforeReconnect(long mine) { return pause(mine, backoff.nextMillis()); }

    void remind() {
        synchronized (telling) {
            if (outage != null) outage.remind();
        }
    }

    void outageGoesOn(Throwable failure) {
        // Of the provider's own making; one for want of a thread, say, tells nothing about what it sends.
        boolean isProviders = failure instanceof ConnectorException && failure.getCause() instanceof JMSException;
        if (isProviders) countMemoryLoss(failure);
        synchronized (telling) {
            if (outage != null) outage.goesOn(Log.reason(failure) + ".", failure);
        }
    }

    void outageBegins(Throwable cause, int again) {
        // "may", because an acknowledgement or a commit may have arrived whose confirmation did not
        String repeats = again == 0 ? "" : "; " + Link.count(again) + " may come again";
        // The connector's own sentence says more than what led to it.
        String reason = cause instanceof ConnectorException ? Log.reason(cause)
                : MemoryShortage.isBehind(cause)            ? MemoryShortage.remedy(cause)
                                                            : Log.rootReason(cause);
        String destination = settings().destination();
        synchronized (telling) {
            if (outage == null) {
                String sentence = "The connection to %s was lost and is made again%s: %s.";
                outage = new Outage(
                        destination, tuning.remindMillis(), sentence.formatted(destination, repeats, reason), cause);
            } else {   // the link that seemed to end it was none
                String sentence = "The connection to %s was lost again%s: %s.";
                outage.goesOn(sentence.formatted(destination, repeats, reason), cause);
            }
        }
    }

    void reopen(long mine) { install(mine, open(mine)); }

    /** A message that does not fit would end every further connection just so. */
    boolean givesUp(long mine, Throwable cause) {
        synchronized (this) {
            boolean lasts = System.nanoTime() - memoryLossesSince > GIVE_UP_NANOS;
            if (generation != mine || memoryLosses < MemoryShortage.MOST_TRIES || !lasts) return false;
        }
        // Said before the state is seen, on which a host may end its process.
        String sentence = "The connection to %s is given up: for %d s the memory has not sufficed for what the provider"
                + " sends, before a message could be dealt with: %s; the limit of what a broker takes is its"
                + " wireFormat.maxFrameSize.";
        Log.warn(sentence.formatted(
                settings().destination(), TimeUnit.NANOSECONDS.toSeconds(GIVE_UP_NANOS), MemoryShortage.remedy(cause)));
        synchronized (this) {
            if (generation != mine) return true;
            state = State.GIVEN_UP;
            ++generation;
            notifyAll();
        }
        return true;
    }

    private synchronized void countMemoryLoss(Throwable cause) {
        if (!MemoryShortage.isBehind(cause)) {
            memoryLosses = 0;
        } else if (memoryLosses++ == 0) {
            memoryLossesSince = System.nanoTime();
        }
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
        synchronized (this) {
            wanted = generation == mine;
            if (wanted) {
                link = opened;
                state = State.CONNECTED;
                openedAt = System.nanoTime();
                if (opened.receives()) OpenConnectors.add(this);
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

    // ---- the watch

    private void startWatch() {
        try {
            start(this::watch, "kel-jms-watch");
        } catch (Error e) {
            Log.warn("There is no thread to watch the connection: " + Log.reason(e) + ".", e);
        }
    }

    /** Tells when an outage has ended, and of a loss that the provider's client keeps to itself. */
    private void watch() {
        Outage hidden = null;
        boolean wasHidden = false;   // seen once: a loss that the connector is told of may look so for a moment
        while (pauseWhileConnected(WATCH_MILLIS)) {
            try {
                endOutageWhenProven();
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

    private void endOutageWhenProven() {
        synchronized (this) {
            if (link == null || System.nanoTime() - openedAt < PROVEN_NANOS) return;
        }
        synchronized (telling) {
            if (outage != null) outage.ends();
            outage = null;
        }
    }

    private Outage hiddenOutage() {
        String destination = settings().destination();
        String sentence = "The connection to %s was lost, which the provider's client keeps to itself: %s.";
        ConnectorException cause = new ConnectorException("it tries to make it again");
        return new Outage(
                destination, tuning.remindMillis(), sentence.formatted(destination, cause.getMessage()), cause);
    }

    // ---- waiting

    private synchronized boolean pauseWhileConnected(long millis) {
        waitFor(millis, () -> state == State.CONNECTED);
        return state == State.CONNECTED;
    }

    /** Waits until a link is there, at most the time; false, and at once, when the generation ends. */
    private synchronized boolean pause(long mine, long millis) {
        waitFor(millis, () -> generation == mine && link == null);
        return generation == mine;
    }

    /** Guarded by this. An interruption, which is nobody's way to end a connector, does not end it. */
    private void waitFor(long millis, BooleanSupplier goesOn) {
        long end = System.nanoTime() + TimeUnit.MILLISECONDS.toNanos(millis);
        for (long left = millis; left > 0 && goesOn.getAsBoolean();) {
            try {
                wait(left);
            } catch (InterruptedException e) {
                // cleared with that
            }
            left = (end - System.nanoTime() + 999_999) / 1_000_000;
        }
    }
}
