package com.morvex.kel.connectors;

import java.util.concurrent.TimeUnit;

/**
 * Waiting for a client ID that the broker still counts as in use, as it does for a while after a process has
 * died. Where a connector of this process holds it that was left alone, that one is closed.
 */
final class ClientIdWait {
    private static final long FIRST_PAUSE_MILLIS = 100;
    private static final long LAST_PAUSE_MILLIS = 500;
    private static final long TELL_NANOS = TimeUnit.SECONDS.toNanos(1);

    /** A reader calls at least four times a second, unless it is busy with a message. */
    private static final long SILENT_NANOS = TimeUnit.SECONDS.toNanos(5);
    private static final long BUSY_NANOS = TimeUnit.SECONDS.toNanos(30);

    private final String clientId;
    private final long limitMillis;
    private final long began = System.nanoTime();
    private ConnectionKeeper holder;   // null once nobody, or nobody of this process, holds it
    private final long callsThen;
    private long pause = FIRST_PAUSE_MILLIS;
    private boolean hasTold;

    ClientIdWait(ConnectionKeeper newcomer, ConnectionSettings settings, Tuning tuning) {
        clientId = settings.clientId();
        limitMillis = tuning.clientIdWaitMillis();
        holder = OpenConnectors.holderFor(newcomer);
        callsThen = holder == null ? 0 : holder.calls();
        if (holder != null) System.gc();   // only the collector knows whether it is forgotten
    }

    boolean isOver() { return System.nanoTime() - began >= TimeUnit.MILLISECONDS.toNanos(limitMillis); }

    /** How long to pause before the next try, having done and said what is due. */
    long nextMillis() {
        long now = System.nanoTime();
        if (holder != null && isLeftAlone(now - began)) {
            Log.warn("The connection with the client ID \"" + clientId + "\" is closed, because another connector"
                    + " of this process needs it and nobody reads from it any more.");
            holder.displace();
            holder = null;
        } else if (!hasTold && now - began > TELL_NANOS) {
            hasTold = true;
            String sentence = "The client ID \"%s\" (parameter clientID) is still in use at the broker; it is waited"
                    + " for up to %d s (system property kel.jms.clientIdWaitMillis).";
            Log.warn(sentence.formatted(clientId, limitMillis / 1_000));
        }
        long next = pause;
        pause = Math.min(LAST_PAUSE_MILLIS, 2 * pause);
        return next;
    }

    private boolean isLeftAlone(long nanos) {
        if (holder.isForgotten()) return true;
        if (holder.isReadBy(Thread.currentThread())) return false;   // which cannot call while it waits here
        boolean isSilent = callsThen % 2 == 0 && holder.calls() == callsThen;
        return isSilent && nanos > (holder.hasMessageInHand() ? BUSY_NANOS : SILENT_NANOS);
    }
}
