package com.morvex.kel.connectors;

/**
 * Who acknowledges messages, and which messages are wanted: system properties that a host in the same JVM sets for
 * its own purposes, read once, when a connector is made. A server sets none of them.
 *
 * @param byHost {@code kel.jms.settle} is "host": only {@link Delivery} acknowledges or commits
 * @param transacted {@code kel.jms.transacted}: consuming sessions are transacted without a durable subscription too
 * @param settleAfter {@code kel.jms.settleAfter}: the most messages that may be taken and not settled
 * @param settleMillis {@code kel.jms.settleMillis}: how long ago the oldest of these may have been taken
 * @param selector {@code kel.jms.selector}: null where every message is wanted
 */
record Settling(boolean byHost, boolean transacted, long settleAfter, long settleMillis, String selector) {
    static Settling fromSystemProperties() {
        return new Settling(isByHost(), Boolean.getBoolean("kel.jms.transacted"),
                Tuning.positive("kel.jms.settleAfter", 100), Tuning.positive("kel.jms.settleMillis", 200),
                selectorOrNull());
    }

    /** The end of a sentence; the key is the one by which a user sets it. */
    String faultOfSelector(Throwable failure) {
        return "selector \"%s\" (host.selector) is not valid: %s".formatted(selector, Log.rootReason(failure));
    }

    private static boolean isByHost() {
        String settle = System.getProperty("kel.jms.settle", "connector");
        if (settle.equals("host")) return true;
        if (settle.equals("connector")) return false;
        throw new ConnectorException(
                "The system property kel.jms.settle is \"" + settle + "\", but must be \"connector\" or \"host\".");
    }

    private static String selectorOrNull() {
        String selector = System.getProperty("kel.jms.selector");
        return selector == null || selector.isBlank() ? null : selector;
    }
}
