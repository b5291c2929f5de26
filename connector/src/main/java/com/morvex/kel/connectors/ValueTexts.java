package com.morvex.kel.connectors;

import java.math.BigDecimal;
import java.math.BigInteger;
import java.time.Instant;
import java.util.Arrays;
import java.util.Date;
import java.util.Locale;

/**
 * The texts of one message's values, which it refuses as soon as they are too much: a few bytes of a message
 * can stand for a value of any size, or for the same value any number of times.
 */
final class ValueTexts {
    private static final String VALUES_ALLOWED = "strings, numbers, Booleans, java.math.BigDecimal and java.util.Date";

    /** No column takes more than 34; writing a number out takes the square of its length. */
    private static final int MOST_DIGITS = 1_000;
    private static final double DIGITS_A_BIT = 0.30103;   // the logarithm of 2

    private final Tuning tuning;
    private String[] texts = new String[16];
    private int count;
    private long characters;
    private long bytes = -1;   // counted only where the number of characters leaves it open: it takes its time

    ValueTexts(Tuning tuning) { this.tuning = tuning; }

    void add(Object value) {
        if (count >= tuning.maxElements()) {
            throw new ConnectorException("it has more than " + tuning.maxElements() + " elements, but at most "
                    + tuning.maxElements() + " are allowed (system property kel.jms.maxElements)");
        }
        String text = valueText(value, count);
        if (count == texts.length) texts = Arrays.copyOf(texts, 2 * count);
        texts[count++] = text;
        if (text != null) addSize(text);
    }

    String[] toArray() { return Arrays.copyOf(texts, count); }

    private void addSize(String text) {
        characters += text.length();
        if (3 * characters <= tuning.maxMessageBytes()) return;
        if (bytes < 0) {
            bytes = 0;
            for (int i = 0; i < count; ++i) bytes += texts[i] == null ? 0 : MessageReader.utf8Length(texts[i]);
        } else {
            bytes += MessageReader.utf8Length(text);
        }
        if (bytes > tuning.maxMessageBytes()) throw MessageReader.tooLong("at least " + bytes, tuning);
    }

    private static String valueText(Object value, int index) {
        if (value == null) return null;
        if (value instanceof BigDecimal decimal) {
            checkDigits(plainDigits(decimal), index);
            return decimal.toPlainString();
        }
        if (value instanceof BigInteger integer) checkDigits(digits(integer), index);
        if (value instanceof Date date) return epochSeconds(date);
        if (value instanceof String || value instanceof Boolean || value instanceof Character || value instanceof Byte
                || value instanceof Short || value instanceof Integer || value instanceof Long || value instanceof Float
                || value instanceof Double || value instanceof BigInteger) {
            return value.toString();
        }
        throw new ConnectorException("its element " + index + " is a " + value.getClass().getTypeName() + ", but only "
                + VALUES_ALLOWED + " are allowed");
    }

    private static void checkDigits(long digits, int index) {
        if (digits <= MOST_DIGITS) return;
        throw new ConnectorException("its element " + index + " is a number of more than " + MOST_DIGITS
                + " digits, but at most " + MOST_DIGITS + " are allowed");
    }

    /** Near enough, and without writing it out. */
    private static long digits(BigInteger value) { return (long) (value.bitLength() * DIGITS_A_BIT) + 1; }

    /** The same of a decimal without its exponent: 1E+3 is 1000, 1E-3 is 0.001. */
    private static long plainDigits(BigDecimal value) {
        long digits = digits(value.unscaledValue());
        return value.scale() < 0 ? digits - value.scale() : Math.max(digits, value.scale());
    }

    /**
     * Seconds since 1970-01-01 UTC with milliseconds, or microseconds where there are any, such as
     * 1577934245.250. The reader of such a text adds the fraction to the seconds, so before 1970 the seconds
     * are rounded down: half a second before is -1.500.
     */
    private static String epochSeconds(Date date) {
        // java.sql.Timestamp has more digits than its milliseconds; java.sql.Date and Time know no instant.
        String kind = date.getClass().getName();
        boolean hasInstant = kind.equals("java.util.Date") || kind.equals("java.sql.Timestamp");
        Instant instant = hasInstant ? date.toInstant() : Instant.ofEpochMilli(date.getTime());
        int micros = instant.getNano() / 1_000;
        String fraction = micros % 1_000 == 0 ? String.format(Locale.ROOT, "%03d", micros / 1_000)
                                              : String.format(Locale.ROOT, "%06d", micros);
        return instant.getEpochSecond() + "." + fraction;
    }
}
