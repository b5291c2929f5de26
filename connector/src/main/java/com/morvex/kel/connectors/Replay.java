package com.morvex.kel.connectors;

import java.util.LinkedHashMap;
import java.util.Map;
import java.util.Set;
import javax.jms.JMSException;
import javax.jms.Message;
import javax.jms.Session;

/** Sends messages once more that were kept as {@link Delivery} told them. */
public final class Replay {
    /** What such a message is a replay of, and how the properties begin that have the headers of the message it was. */
    static final String OF = "kelReplayOf";
    static final String PREFIX = "kelReplay";

    /** Of the names that JMS reserves, those that are a sender's to set. */
    private static final Set<String> SETTABLE = Set.of("JMSXGroupID", "JMSXGroupSeq");

    private Replay() {}

    /**
     * Sends one message, with the body, the kind, the correlation ID, the type and the properties that it had.
     *
     * @param connector one that is connected for sending
     * @param body as {@link Delivery#body} gave it
     * @param description as {@link Delivery#describe} gave it
     * @param replayOf becomes the property {@code kelReplayOf}
     * @return false, and one sentence in the log, when that failed; nothing was sent then, as far as is known
     */
    public static boolean send(JmsConnector connector, byte[] body, String[] description, String replayOf) {
        return connector.replay(body, description, replayOf);
    }

    static boolean isReplay(Message message) {
        try {
            return message.propertyExists(OF);
        } catch (JMSException | RuntimeException e) {
            Log.detail("A message does not tell its properties.", e);
            return false;
        }
    }

    /** The priority to send a message with: its original's, where it is a replay. */
    static int priorityOf(Message message) throws JMSException {
        String original = isReplay(message) ? message.getStringProperty(PREFIX + "JMSPriority") : null;
        return original == null ? Message.DEFAULT_PRIORITY : Integer.parseInt(original);
    }

    static Message message(Session session, MessageBody bodies, byte[] body, String[] description, String replayOf)
            throws JMSException {
        if (body == null) throw new ConnectorException("The message was not sent: its body was not kept.");
        if (description == null || description.length < 3 || description.length % 3 != 0
                || !"kind".equals(description[0])) {
            throw new ConnectorException("The message was not sent: its description must be triples that begin with"
                    + " its kind.");
        }
        Message message = bodies.message(session, description[2], body);
        Map<String, String> headers = new LinkedHashMap<>();
        for (int i = 3; i < description.length; i += 3) {
            if (description[i + 1].equals("header")) headers.put(description[i], description[i + 2]);
            else setProperty(message, description[i], description[i + 1], description[i + 2]);
        }
        message.setJMSCorrelationID(headers.get("JMSCorrelationID"));
        message.setJMSType(headers.get("JMSType"));
        setText(message, OF, replayOf);
        for (Map.Entry<String, String> header : headers.entrySet()) {
            setText(message, PREFIX + header.getKey(), header.getValue());
        }
        return message;
    }

    private static void setText(Message message, String name, String value) throws JMSException {
        if (value != null) message.setStringProperty(name, value);
    }

    private static void setProperty(Message message, String name, String type, String value) throws JMSException {
        if (name.startsWith(PREFIX) || (name.startsWith("JMS") && !SETTABLE.contains(name))) return;
        try {
            message.setObjectProperty(name, valueOf(type, value));
        } catch (NumberFormatException e) {
            String wrong = "The message was not sent: its property %s is \"%s\", which is no %s.";
            throw new ConnectorException(wrong.formatted(name, value, type), e);
        }
    }

    private static Object valueOf(String type, String text) {
        return switch (type) {
            case "String" -> text;
            case "Boolean" -> Boolean.valueOf(text);
            case "Byte" -> Byte.valueOf(text);
            case "Short" -> Short.valueOf(text);
            case "Integer" -> Integer.valueOf(text);
            case "Long" -> Long.valueOf(text);
            case "Float" -> Float.valueOf(text);
            case "Double" -> Double.valueOf(text);
            default -> throw new ConnectorException("The message was not sent: \"" + type
                    + "\" is no type of a property; allowed are String, Boolean, Byte, Short, Integer, Long, Float and"
                    + " Double.");
        };
    }
}
