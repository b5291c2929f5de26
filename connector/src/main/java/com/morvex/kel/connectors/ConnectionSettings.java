package com.morvex.kel.connectors;

/**
 * What one connector was made with.
 *
 * @param destinationType "QUEUE" names a queue, anything else a topic
 * @param propertyNames name of each column as a message property; null when the columns are not known
 */
record ConnectionSettings(String connectionFactory, String destinationType, String destinationName,
        boolean durable, String[] propertyNames, String jndiContextFactory, String jndiUrl, String clientId,
        String subscriptionName) {
    /** For sentences: who is to blame, and the parameter that names it. */
    String provider() { return "The JMS provider at \"" + jndiUrl + "\" (parameter jndiURL)"; }

    boolean isQueue() { return "QUEUE".equals(destinationType); }

    /** For log texts: queue "Orders". */
    String destination() { return (isQueue() ? "queue" : "topic") + " \"" + destinationName + "\""; }

    /** Every column's own name, or the name that it is mapped to where there is one. */
    static String[] propertyNames(String[] columnNames, String[] mappedNames) {
        if (columnNames == null) return null;
        String[] names = columnNames.clone();
        for (int i = 0; mappedNames != null && i < Math.min(names.length, mappedNames.length); ++i) {
            if (mappedNames[i] != null) names[i] = mappedNames[i];
        }
        return names;
    }
}
