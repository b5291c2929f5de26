package com.morvex.kel.connectors;

import java.io.ObjectInputFilter;
import java.nio.ByteBuffer;
import java.nio.charset.CharacterCodingException;
import java.nio.charset.StandardCharsets;
import java.util.Arrays;
import java.util.List;
import javax.jms.BytesMessage;
import javax.jms.JMSException;
import javax.jms.MapMessage;
import javax.jms.Message;
import javax.jms.MessageEOFException;
import javax.jms.ObjectMessage;
import javax.jms.StreamMessage;
import javax.jms.TextMessage;

/**
 * Makes a text or an array of texts of a message.
 *
 * <p>A message that does not fit is refused with a {@link ConnectorException} saying why and what is allowed;
 * so is an empty one, which the reader of the result would take for "nothing waiting".
 */
final class MessageReader {
    private final Tuning tuning;

    MessageReader(Tuning tuning) { this.tuning = tuning; }

    /** The body of a TextMessage, or of a BytesMessage in UTF-8; never empty. */
    String text(Message message) throws JMSException {
        String text;
        if (message instanceof TextMessage textMessage) {
            text = textMessage.getText();
        } else if (message instanceof BytesMessage bytesMessage) {
            text = utf8(bytesMessage);
        } else {
            throw new ConnectorException("it is " + kindOf(message)
                    + ", but the text formats take a TextMessage or a BytesMessage in UTF-8");
        }
        if (text == null || text.isEmpty()) throw new ConnectorException("its body is empty");
        checkSize(text);
        return text;
    }

    /** Refuses what must not reach a converter: an unguarded object, a text or bytes beyond the limit. */
    void checkForConverter(Message message) throws JMSException {
        if (message instanceof ObjectMessage) checkObjectFilter(tuning);
        if (message instanceof BytesMessage bytes) checkSize(bytes.getBodyLength());
        if (message instanceof TextMessage text && text.getText() != null) checkSize(text.getText());
    }

    /**
     * The values of an ObjectMessage or a StreamMessage; at least one field.
     *
     * @param prefixLength how many elements stand before the first field
     */
    String[] array(Message message, int prefixLength) throws JMSException {
        ValueTexts texts = new ValueTexts(tuning);
        if (message instanceof ObjectMessage objectMessage) {
            for (Object value : objectValues(objectMessage)) texts.add(value);
        } else if (message instanceof StreamMessage streamMessage) {
            addStreamValues(streamMessage, texts);
        } else {
            throw new ConnectorException("it is " + kindOf(message)
                    + ", but the object array format takes an ObjectMessage or a StreamMessage");
        }
        String[] array = texts.toArray();
        checkFields(array, prefixLength);
        return array;
    }

    /** Refuses an array without a field. */
    static void checkFields(String[] texts, int prefixLength) {
        if (texts.length > prefixLength) return;
        throw new ConnectorException("its array has " + texts.length + " elements, but must have at least "
                + (prefixLength + 1) + (prefixLength == 0 ? "" : ": stream name, opcode and a field"));
    }

    /**
     * Refuses an object message while nothing limits the classes that reading it would bring to life: the
     * provider makes the objects before anybody can look at them.
     */
    static void checkObjectFilter(Tuning tuning) {
        if (tuning.trustObjectMessages()) return;
        if (ObjectInputFilter.Config.getSerialFilter() != null) return;
        throw new ConnectorException("it is an ObjectMessage, which is read only when the system property"
                + " jdk.serialFilter limits the classes, or kel.jms.trustObjectMessages is true");
    }

    private List<?> objectValues(ObjectMessage message) throws JMSException {
        checkObjectFilter(tuning);
        Object body = message.getObject();
        if (body instanceof Object[] array) return Arrays.asList(array);
        if (body instanceof List<?> list) return list;
        throw new ConnectorException("it holds " + (body == null ? "null" : "a " + body.getClass().getName())
                + ", but must hold a String[], an Object[] or a List");
    }

    private static void addStreamValues(StreamMessage message, ValueTexts texts) throws JMSException {
        message.reset();
        try {
            while (true) texts.add(message.readObject());
        } catch (MessageEOFException end) {
            // all of them
        }
    }

    private String utf8(BytesMessage message) throws JMSException {
        checkSize(message.getBodyLength());
        byte[] bytes = new byte[(int) message.getBodyLength()];
        message.reset();
        if (bytes.length > 0) message.readBytes(bytes);
        try {
            return StandardCharsets.UTF_8.newDecoder().decode(ByteBuffer.wrap(bytes)).toString();
        } catch (CharacterCodingException e) {
            throw new ConnectorException("its bytes are not UTF-8 (" + Log.reason(e) + "), but must be", e);
        }
    }

    private void checkSize(long bytes) {
        if (bytes <= tuning.maxMessageBytes()) return;
        throw tooLong("" + bytes, tuning);
    }

    /** Counts bytes only where the number of characters leaves it open: counting takes its time. */
    private void checkSize(String text) {
        if (3L * text.length() > tuning.maxMessageBytes()) checkSize(utf8Length(text));
    }

    static ConnectorException tooLong(String bytes, Tuning tuning) {
        return new ConnectorException("it has " + bytes + " bytes, but at most " + tuning.maxMessageBytes()
                + " are allowed (system property kel.jms.maxMessageBytes)");
    }

    static long utf8Length(String text) {
        long bytes = 0;
        for (int i = 0; i < text.length(); ++i) {
            char c = text.charAt(i);
            bytes += c < 0x80 ? 1 : 3;
            if (c >= 0x80 && (c < 0x800 || Character.isSurrogate(c))) --bytes;
        }
        return bytes;
    }

    private static String kindOf(Message message) {
        if (message instanceof TextMessage) return "a TextMessage";
        if (message instanceof BytesMessage) return "a BytesMessage";
        if (message instanceof ObjectMessage) return "an ObjectMessage";
        if (message instanceof StreamMessage) return "a StreamMessage";
        if (message instanceof MapMessage) return "a MapMessage";
        return "a message without a body";
    }
}
