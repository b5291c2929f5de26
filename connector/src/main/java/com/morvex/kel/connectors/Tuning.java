package com.morvex.kel.connectors;

/**
 * The connector's limits, each a system property that is read once, when a connector is made. What a host in the same
 * JVM sets for itself is in {@link Settling}.
 */
record Tuning(long receiveTimeoutMillis, long connectTimeoutMillis, long clientIdWaitMillis, long remindMillis,
        long maxMessageBytes, long maxElements, long browseLimit, long browseMillis, boolean trustObjectMessages) {
    static Tuning fromSystemProperties() {
        return new Tuning(positive("kel.jms.receiveTimeoutMillis", 250),
                positive("kel.jms.connectTimeoutMillis", 10_000), positive("kel.jms.clientIdWaitMillis", 35_000),
                positive("kel.jms.remindMillis", 60_000), positive("kel.jms.maxMessageBytes", 64L << 20),
                positive("kel.jms.maxElements", 100_000), positive("kel.jms.browseLimit", 100),
                positive("kel.jms.browseMillis", 3_000), Boolean.getBoolean("kel.jms.trustObjectMessages"));
    }

    static long positive(String property, long standard) {
        String text = System.getProperty(property);
        if (text == null) return standard;
        try {
            long value = Long.parseLong(text.trim());
            // The upper bound keeps sums of times and sizes inside a long.
            if (value >= 1 && value <= Integer.MAX_VALUE) return value;
        } catch (NumberFormatException e) {
            // reported below with the other unusable values
        }
        throw new ConnectorException("The system property " + property + " is \"" + text
                + "\", but must be an integer from 1 to " + Integer.MAX_VALUE + ".");
    }
}
