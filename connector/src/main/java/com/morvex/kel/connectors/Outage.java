package com.morvex.kel.connectors;

import java.util.HashSet;
import java.util.Set;
import java.util.concurrent.TimeUnit;

/**
 * What is said of one time without a connection: that it began, each new reason once, that it goes on, once a
 * minute, and that it ended. The same sentence again and again would bury everything else.
 */
final class Outage {
    /** Not final, so that a test need not wait for a minute. */
    static volatile long remindNanos = TimeUnit.MINUTES.toNanos(1);
    private static final int MOST_REASONS = 3;

    private final String destination;
    private final long began = System.nanoTime();
    private final Set<String> reasons = new HashSet<>();
    private long said = began;
    private String last;

    /** @param sentence says that it began, and is told with the reason at its end */
    Outage(String destination, String sentence, String reason) {
        this.destination = destination;
        last = reason;
        reasons.add(last);
        Log.warn(sentence + ": " + last + ".");
    }

    /** An attempt to end it failed. */
    synchronized void goesOn(Throwable failure) {
        last = Log.rootReason(failure);
        if (reasons.size() < MOST_REASONS && reasons.add(last)) {
            said = System.nanoTime();
            Log.warn(Log.reason(failure) + ".", failure);
        } else {
            Log.detail("Another try to connect failed.", failure);
        }
    }

    synchronized void remind() {
        long now = System.nanoTime();
        if (now - said < remindNanos) return;
        said = now;
        String sentence = "There has been no connection to %s for %d s: %s.";
        Log.warn(sentence.formatted(destination, TimeUnit.NANOSECONDS.toSeconds(now - began), last));
    }

    void ends() { Log.info("The connection to " + destination + " is there again."); }
}
