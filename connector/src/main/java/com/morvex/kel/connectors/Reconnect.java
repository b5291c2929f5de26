package com.morvex.kel.connectors;

import java.util.concurrent.locks.LockSupport;

/**
 * The work of one thread: puts an end to a link that no longer works and makes another in its place. Whatever
 * is thrown on the way, an Error too, ends one round and nothing else.
 */
final class Reconnect implements Runnable {
    private static final long REST_NANOS = 100_000_000;

    private final ConnectionKeeper keeper;
    private final long generation;
    private final Link failed;
    private final Throwable cause;
    private boolean isDropped;
    private boolean isTold;

    Reconnect(ConnectionKeeper keeper, long generation, Link failed, Throwable cause) {
        this.keeper = keeper;
        this.generation = generation;
        this.failed = failed;
        this.cause = cause;
    }

    @Override
    public void run() {
        Throwable reason = cause;
        while (keeper.isAt(generation)) {
            boolean hasPaused = false;
            try {
                tell(reason, dropOnce());
                if (keeper.givesUp(generation, reason)) return;
                hasPaused = true;
                if (!keeper.pauseBeforeReconnect(generation)) return;
                keeper.remind();
                keeper.reopen(generation);
                return;
            } catch (Throwable e) {
                reason = e;
                if (!hasPaused) LockSupport.parkNanos(REST_NANOS);
            }
        }
    }

    /** Closed before another is opened, because it may still hold the client ID. */
    private int dropOnce() {
        if (isDropped) return 0;
        int again = failed.drop();
        isDropped = true;
        return again;
    }

    private void tell(Throwable reason, int again) {
        if (isTold && reason != cause) keeper.outageGoesOn(reason);
        if (!isTold) keeper.outageBegins(reason, again);
        isTold = true;
    }
}
