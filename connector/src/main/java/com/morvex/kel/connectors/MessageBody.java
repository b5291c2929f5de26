package com.morvex.kel.connectors;

import java.io.ByteArrayInputStream;
import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.io.ObjectInputFilter;
import java.io.ObjectInputStream;
import java.io.ObjectOutputStream;
import java.io.Serializable;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.Enumeration;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import javax.jms.BytesMessage;
import javax.jms.JMSException;
import javax.jms.MapMessage;
import javax.jms.Message;
import javax.jms.MessageEOFException;
import javax.jms.ObjectMessage;
import javax.jms.Session;
import javax.jms.StreamMessage;
import javax.jms.TextMessage;

/** Message bodies as bytes that can be kept, and messages made of such bytes. */
final class MessageBody {
    /** Made beforehand: what a stream or a map may hold is no reason to bring any other class to life. */
    private static final ObjectInputFilter VALUES =
            ObjectInputFilter.Config.createFilter("java.util.ArrayList;java.util.LinkedHashMap;java.util.HashMap;"
                    + "java.util.Map$Entry;java.lang.Object;java.lang.String;java.lang.Boolean;java.lang.Character;"
                    + "java.lang.Number;java.lang.Byte;java.lang.Short;java.lang.Integer;java.lang.Long;"
                    + "java.lang.Float;java.lang.Double;!*");

    private final Tuning tuning;

    MessageBody(Tuning tuning) { this.tuning = tuning; }

    static String kindOf(Message message) {
        if (message instanceof TextMessage) return "text";
        if (message instanceof BytesMessage) return "bytes";
        if (message instanceof ObjectMessage) return "object";
        if (message instanceof StreamMessage) return "stream";
        if (message instanceof MapMessage) return "map";
        return "none";
    }

    /**
     * A text in UTF-8, bytes, a serialised object, list or map; empty without a body, null if it cannot be had. An
     * error of the virtual machine goes up: with more memory it could.
     */
    byte[] bytes(Message message) {
        try {
            if (message instanceof TextMessage text) return utf8(text.getText());
            if (message instanceof BytesMessage bytes) return bytesOf(bytes);
            if (message instanceof ObjectMessage object) return objectOf(object);
            if (message instanceof StreamMessage stream) return serialised(valuesOf(stream));
            if (message instanceof MapMessage map) return serialised(valuesOf(map));
            return message == null ? null : new byte[0];
        } catch (JMSException | IOException | RuntimeException | Error e) {
            if (MemoryShortage.isBehind(e)) throw new OutOfMemoryError(Log.rootReason(e));
            Log.detail("The body of a message cannot be had.", e);
            return null;
        }
    }

    /** The reverse; a ConnectorException when no message can be made of it. */
    Message message(Session session, String kind, byte[] body) throws JMSException {
        switch (kind) {
            case "text":
                return session.createTextMessage(new String(body, StandardCharsets.UTF_8));
            case "bytes":
                BytesMessage bytes = session.createBytesMessage();
                bytes.writeBytes(body);
                return bytes;
            case "object":
                MessageReader.checkObjectFilter(tuning);
                return session.createObjectMessage((Serializable) deserialised(body, null, Serializable.class));
            case "stream":
                StreamMessage stream = session.createStreamMessage();
                for (Object value : (List<?>) deserialised(body, VALUES, List.class)) stream.writeObject(value);
                return stream;
            case "map":
                MapMessage map = session.createMapMessage();
                for (Map.Entry<?, ?> entry : ((Map<?, ?>) deserialised(body, VALUES, Map.class)).entrySet()) {
                    map.setObject((String) entry.getKey(), entry.getValue());
                }
                return map;
            case "none":
                return session.createMessage();
            default:
                throw new ConnectorException(
                        "its kind \"" + kind + "\" is none of text, bytes, object, stream, map, none");
        }
    }

    private static byte[] utf8(String text) {
        return text == null ? new byte[0] : text.getBytes(StandardCharsets.UTF_8);
    }

    private static byte[] bytesOf(BytesMessage message) throws JMSException {
        byte[] bytes = new byte[Math.toIntExact(message.getBodyLength())];
        message.reset();
        if (bytes.length > 0) message.readBytes(bytes);
        return bytes;
    }

    private byte[] objectOf(ObjectMessage message) throws JMSException, IOException {
        byte[] asItCame = SerialisedObject.of(message, tuning.maxMessageBytes());
        if (asItCame != null) return asItCame;
        MessageReader.checkObjectFilter(tuning);
        return serialised(message.getObject());
    }

    private static ArrayList<Object> valuesOf(StreamMessage message) throws JMSException {
        ArrayList<Object> values = new ArrayList<>();
        message.reset();
        try {
            while (true) values.add(message.readObject());
        } catch (MessageEOFException end) {
            return values;
        }
    }

    private static LinkedHashMap<String, Object> valuesOf(MapMessage message) throws JMSException {
        LinkedHashMap<String, Object> values = new LinkedHashMap<>();
        for (Enumeration<?> names = message.getMapNames(); names.hasMoreElements();) {
            String name = (String) names.nextElement();
            values.put(name, message.getObject(name));
        }
        return values;
    }

    private static byte[] serialised(Serializable value) throws IOException {
        ByteArrayOutputStream bytes = new ByteArrayOutputStream();
        try (ObjectOutputStream out = new ObjectOutputStream(bytes)) {
            out.writeObject(value);
        }
        return bytes.toByteArray();
    }

    /** @param filter in place of the JVM's; null for that */
    private static Object deserialised(byte[] bytes, ObjectInputFilter filter, Class<?> wanted) {
        try (ObjectInputStream in = new ObjectInputStream(new ByteArrayInputStream(bytes))) {
            if (filter != null) in.setObjectInputFilter(filter);
            Object value = in.readObject();
            if (value == null || wanted.isInstance(value)) return value;
            throw new ConnectorException("its body is a serialised " + value.getClass().getName());
        } catch (IOException | ClassNotFoundException e) {
            throw new ConnectorException("its body cannot be deserialised: " + Log.reason(e), e);
        }
    }
}
