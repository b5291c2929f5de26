package com.morvex.kel.connectors;

import java.util.concurrent.ThreadLocalRandom;

/**
 * The pauses between tries to reconnect, from 0.1 s to 5 s.
 *
 * <p>They grow by a fifth, so that a broker that was away for a moment is noticed within about a fifth of
 * that time, and one that was away for long within seconds. A random quarter is taken off, so that many
 * clients do not come back at the same moment.
 */
final class Backoff {
    static final double FIRST_MILLIS = 100;
    static final double LAST_MILLIS = 5_000;

    private double next = FIRST_MILLIS;

    long nextMillis() {
        double pause = next;
        next = Math.min(LAST_MILLIS, pause * 1.2);
        return Math.round(pause * ThreadLocalRandom.current().nextDouble(0.75, 1));
    }
}
