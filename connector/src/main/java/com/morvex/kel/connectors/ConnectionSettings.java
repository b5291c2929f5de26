package com.morvex.kel.connectors;

import java.util.Objects;

/**
 * What one connector was made with.
 *
 * @param destinationType "QUEUE" names a queue, anything else a topic
 * @param propertyNames name of each column as a message property; null when the columns are not known
 */
record ConnectionSettings(String connectionFactory, String destinationType, String destinationName, boolean durable,
        String[] propertyNames, String jndiContextFactory, String jndiUrl, String clientId, String subscriptionName) {
    /** For sentences: who is to blame, and the parameter that names it. */
    String provider() { return "The JMS provider at \"" + jndiUrl + "\" (parameter jndiURL)"; }

    boolean isQueue() { return "QUEUE".equals(destinationType); }

    /** Whether both name the same messages at the same provider, received in the same way. */
    boolean isSameSource(ConnectionSettings other) {
        return isSameClient(other) && Objects.equals(connectionFactory, other.connectionFactory)
                && destination().equals(other.destination()) && durable == other.durable
                && Objects.equals(subscriptionName, other.subscriptionName);
    }

    /** Whether both are the same client to the same provider. */
    boolean isSameClient(ConnectionSettings other) {
        return Objects.equals(jndiUrl, other.jndiUrl) && Objects.equals(clientId, other.clientId);
    }

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
