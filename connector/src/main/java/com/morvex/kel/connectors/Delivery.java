package com.morvex.kel.connectors;

import java.util.function.Function;
import javax.jms.Message;

/**
 * A side door for a host in the same JVM that takes acknowledgement into its own hands: it puts the messages taken
 * somewhere safe and says so here. It needs the system property {@code kel.jms.settle} to be "host"; then no receive,
 * no stop and no commit acknowledges anything, only {@link #settle} does.
 *
 * <p>Native code finds these methods by name and signature. Every method is about the connector whose receives run on
 * the calling thread, the last one where there were several; on any other thread there are no messages. The batch is
 * what was taken since the last settling: one message for each receive that did not answer "nothing waiting", in
 * order, the refused ones too. Once it has {@code kel.jms.settleAfter} messages, is {@code kel.jms.settleMillis} old
 * or is lost, receives answer "nothing waiting" at once until {@link #settle} or {@link #forget}; while it is
 * not empty they do not wait for more than a few milliseconds.
 *
 * <p>A disconnect from another thread ends a waiting receive and lets none take any more, but leaves the reader three
 * seconds to settle, to forget or to disconnect. A disconnect on the reader's own thread settles nothing.
 */
public final class Delivery {
    private static final ThreadLocal<Batch> BATCH = new ThreadLocal<>();

    private Delivery() {}

    /** What the calling thread receives from now on is in the batch; null: it receives without a host. */
    static void isFor(Batch batch) {
        if (BATCH.get() != batch) BATCH.set(batch);
    }

    /**
     * The IDs of the batch; null for a message that the provider gave none, or for a receive that failed without one.
     */
    public static String[] taken() { return each(MessageFacts::id); }

    /** How many messages the batch has. */
    public static int count() {
        Batch batch = BATCH.get();
        return batch == null ? 0 : batch.count();
    }

    /**
     * What each message has as a header; null where that is absent, as is a time of 0.
     *
     * <p>JMSTimestamp and JMSExpiration are decimal milliseconds, JMSRedelivered is "true" or "false", JMSDeliveryMode
     * "PERSISTENT" or "NON_PERSISTENT", JMSDestination and JMSReplyTo "queue://NAME" or "topic://NAME". For a message
     * that {@link Replay} sent JMSMessageID and JMSTimestamp are those of the message that it was made of.
     *
     * @throws ConnectorException when a message has no header of that name
     */
    public static String[] header(String name) { return each(message -> MessageFacts.header(message, name)); }

    /** What each message has as a property, as its text; null for a message without it, and when no message has it. */
    public static String[] property(String name) {
        String[] values = each(message -> MessageFacts.property(message, name));
        for (String value : values) {
            if (value != null) return values;
        }
        return null;
    }

    /** Why the connector refused the message, one sentence that is safe to show; null when it was handed on. */
    public static String refusal(int message) {
        Batch batch = BATCH.get();
        return batch == null ? null : batch.refusal(message);
    }

    /** The first of the texts that were handed on for the message; null when that is null, or it was one text. */
    public static String firstElement(int message) {
        Batch batch = BATCH.get();
        return batch == null ? null : batch.first(message);
    }

    /**
     * The body as it came: a text in UTF-8, bytes, a serialised object, for a stream message a serialised
     * {@code ArrayList} of its values, for a map message a serialised {@code LinkedHashMap}; empty for no body. Null
     * when it cannot be had; an OutOfMemoryError when it could with more memory.
     */
    public static byte[] body(int message) {
        Batch batch = BATCH.get();
        return batch == null ? null : batch.body(message);
    }

    /**
     * Name, type and value of all there is to a message besides its body: first "kind", "" and one of "text", "bytes",
     * "object", "stream", "map" and "none"; then the headers that are set, with the type "header"; then the
     * properties, with the simple name of their Java type. Empty where there is no message.
     */
    public static String[] describe(int message) {
        Batch batch = BATCH.get();
        return MessageFacts.describe(batch == null ? null : batch.message(message));
    }

    /** Whether the connection over which the batch came has ended: nothing of it can be settled, it comes again. */
    public static boolean isLost() {
        Batch batch = BATCH.get();
        return batch != null && batch.isLost();
    }

    /**
     * All of the batch is safe: acknowledges or commits it; the batch is empty then. False when that failed or nobody
     * knows, so that the messages may come again, which the log tells. An acknowledgement that a provider's client
     * sends without waiting for an answer counts as done; a commit has been answered.
     */
    public static boolean settle() {
        Batch batch = BATCH.get();
        return batch == null || batch.settle();
    }

    /**
     * Gives the batch back to the provider, for it to come again over the same connection; the batch is empty then.
     * False when that connection has ended or is given up, so that it comes again over another one. Providers bound how
     * often a message may come again: a host that cannot keep anything for a while waits with the batch in hand.
     */
    public static boolean forget() {
        Batch batch = BATCH.get();
        return batch == null || batch.forget();
    }

    private static String[] each(Function<Message, String> question) {
        Batch batch = BATCH.get();
        String[] answers = new String[batch == null ? 0 : batch.count()];
        for (int i = 0; i < answers.length; ++i) answers[i] = question.apply(batch.message(i));
        return answers;
    }
}
