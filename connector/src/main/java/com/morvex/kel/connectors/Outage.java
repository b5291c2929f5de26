package com.morvex.kel.connectors;

import java.util.HashSet;
import java.util.Set;
import java.util.concurrent.TimeUnit;

/**
 * What is said of one time without a connection: that it began, each new reason once, that it goes on, once a
 * minute, and that it ended. The same sentence again and again would bury everything else. One thread at a time.
 */
final class Outage {
    private static final int MOST_REASONS = 3;

    private final String destination;
    private final long remindNanos;
    private final long began = System.nanoTime();
    private final Set<String> reasons = new HashSet<>();
    private long said = began;
    private String last;

    /** @param sentence says that it began, and why */
    Outage(String destination, long remindMillis, String sentence, Throwable cause) {
        this.destination = destination;
        remindNanos = TimeUnit.MILLISECONDS.toNanos(remindMillis);
        last = Log.rootReason(cause);
        reasons.add(last);
        Log.warn(sentence, cause);
    }

    /**
     * An attempt to end it failed, or ended it for a moment only.
     *
     * @param sentence said when the reason at the root is a new one
     */
    void goesOn(String sentence, Throwable cause) {
        last = Log.rootReason(cause);
        if (reasons.size() < MOST_REASONS && reasons.add(last)) {
            said = System.nanoTime();
            Log.warn(sentence, cause);
        } else {
            Log.detail(sentence, cause);
        }
    }

    void remind() {
        long now = System.nanoTime();
        if (now - said < remindNanos) return;
        said = now;
        String sentence = "There has been no connection to %s for %d s: %s.";
        Log.warn(sentence.formatted(destination, TimeUnit.NANOSECONDS.toSeconds(now - began), last));
    }

    void ends() { Log.info("The connection to " + destination + " is there again."); }
}
