package com.morvex.kel.connectors;

import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.io.InputStream;
import java.util.zip.InflaterInputStream;
import javax.jms.ObjectMessage;

/**
 * The object of a message as it came, serialised. JMS has no question for that, and asking for the object brings
 * classes to life, or fails because a filter keeps them out; but a message that knows {@code getContent}, as
 * ActiveMQ's, can be asked.
 */
final class SerialisedObject {
    private static final int MAGIC = 0xACED;   // a serialised object begins so

    private SerialisedObject() {}

    /** Null where the provider does not say, and beyond the limit. */
    static byte[] of(ObjectMessage message, long limit) throws IOException {
        try {
            message.getClass().getMethod("storeContent").invoke(message);
            Object content = message.getClass().getMethod("getContent").invoke(message);
            if (content == null) return null;
            byte[] data = (byte[]) content.getClass().getField("data").get(content);
            int offset = content.getClass().getField("offset").getInt(content);
            int length = content.getClass().getField("length").getInt(content);
            boolean isCompressed = (boolean) message.getClass().getMethod("isCompressed").invoke(message);
            InputStream plain = new ByteArrayInputStream(data, offset, length);
            return read(isCompressed ? new InflaterInputStream(plain) : plain, limit);
        } catch (ReflectiveOperationException | RuntimeException e) {
            Log.detail("The provider does not tell a message's serialised object.", e);
            return null;
        }
    }

    private static byte[] read(InputStream in, long limit) throws IOException {
        byte[] bytes = in.readNBytes((int) Math.min(limit + 1, Integer.MAX_VALUE));
        boolean isObject = bytes.length > 1 && ((bytes[0] & 0xFF) << 8 | bytes[1] & 0xFF) == MAGIC;
        return isObject && bytes.length <= limit ? bytes : null;
    }
}
