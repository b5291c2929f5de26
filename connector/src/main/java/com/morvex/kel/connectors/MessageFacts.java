package com.morvex.kel.connectors;

import java.util.ArrayList;
import java.util.Collections;
import java.util.Enumeration;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import javax.jms.DeliveryMode;
import javax.jms.Destination;
import javax.jms.JMSException;
import javax.jms.Message;
import javax.jms.Queue;
import javax.jms.Topic;

/** What a message's headers and properties say, as texts; what a provider cannot tell is absent. */
final class MessageFacts {
    private interface Header {
        String of(Message message) throws JMSException;
    }

    /** In the order in which they are described. Zero stands for "none" in JMSTimestamp and JMSExpiration. */
    private static final Map<String, Header> HEADERS = new LinkedHashMap<>();

    static {
        HEADERS.put("JMSMessageID", Message::getJMSMessageID);
        HEADERS.put("JMSTimestamp", message -> time(message.getJMSTimestamp()));
        HEADERS.put("JMSCorrelationID", Message::getJMSCorrelationID);
        HEADERS.put("JMSRedelivered", message -> String.valueOf(message.getJMSRedelivered()));
        HEADERS.put("JMSType", Message::getJMSType);
        HEADERS.put("JMSPriority", message -> String.valueOf(message.getJMSPriority()));
        HEADERS.put("JMSExpiration", message -> time(message.getJMSExpiration()));
        HEADERS.put("JMSReplyTo", message -> nameOf(message.getJMSReplyTo()));
        HEADERS.put("JMSDestination", message -> nameOf(message.getJMSDestination()));
        HEADERS.put("JMSDeliveryMode",
                message -> message.getJMSDeliveryMode() == DeliveryMode.PERSISTENT ? "PERSISTENT" : "NON_PERSISTENT");
    }

    private MessageFacts() {}

    /** Null where the message does not have it; a ConnectorException when there is no header of the name. */
    static String header(Message message, String name) {
        Header header = HEADERS.get(name);
        if (header == null) {
            String unknown = "\"%s\" is no header of a message; allowed are %s.";
            throw new ConnectorException(unknown.formatted(name, String.join(", ", HEADERS.keySet())));
        }
        return message == null ? null : original(message, name, header);
    }

    /** Null where the message does not have it. */
    static String property(Message message, String name) {
        Object value = message == null ? null : value(message, name);
        return value == null ? null : value.toString();
    }

    /** The ID that the provider gave it, also where it stands for another message; null where it gave none. */
    static String id(Message message) { return message == null ? null : orNull(message, Message::getJMSMessageID); }

    /** Name, type and value of the body's kind, of each header that is set and of each property. */
    static String[] describe(Message message) {
        List<String> triples = new ArrayList<>();
        if (message == null) return new String[0];
        Collections.addAll(triples, "kind", "", MessageBody.kindOf(message));
        HEADERS.forEach((name, header) -> {
            String value = original(message, name, header);
            if (value != null) Collections.addAll(triples, name, "header", value);
        });
        for (String name : propertyNames(message)) {
            Object value = value(message, name);
            if (value != null) Collections.addAll(triples, name, value.getClass().getSimpleName(), value.toString());
        }
        return triples.toArray(new String[0]);
    }

    private static List<String> propertyNames(Message message) {
        List<String> names = new ArrayList<>();
        try {
            Enumeration<?> found = message.getPropertyNames();
            while (found.hasMoreElements()) names.add((String) found.nextElement());
        } catch (JMSException | RuntimeException e) {
            Log.detail("A message does not tell its properties.", e);
        }
        return names;
    }

    private static Object value(Message message, String name) {
        try {
            return message.getObjectProperty(name);
        } catch (JMSException | RuntimeException e) {
            Log.detail("A message does not tell a property.", e);
            return null;
        }
    }

    private static String orNull(Message message, Header header) {
        try {
            return header.of(message);
        } catch (JMSException | RuntimeException e) {
            Log.detail("A message does not tell a header.", e);
            return null;
        }
    }

    /** A replayed message stands for the one that it was made of. */
    private static String original(Message message, String name, Header header) {
        String original = Replay.isReplay(message) ? property(message, Replay.PREFIX + name) : null;
        return original == null ? orNull(message, header) : original;
    }

    private static String time(long millis) { return millis == 0 ? null : String.valueOf(millis); }

    private static String nameOf(Destination destination) throws JMSException {
        if (destination instanceof Queue queue) return "queue://" + queue.getQueueName();
        if (destination instanceof Topic topic) return "topic://" + topic.getTopicName();
        return destination == null ? null : destination.toString();
    }
}
