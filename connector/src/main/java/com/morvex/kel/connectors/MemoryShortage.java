package com.morvex.kel.connectors;

import java.util.LinkedHashMap;
import java.util.Map;
import javax.jms.JMSException;
import javax.jms.Message;

/**
 * The messages that could not be read for want of memory, and how often.
 *
 * <p>A virtual machine that cannot go on says nothing about the message in hand, which must come again; only
 * one that comes again and again so is itself to blame. A stack overflow is the message's own: its nesting.
 */
final class MemoryShortage {
    /** How often a message may be in hand when the memory runs out. */
    static final int MOST_TRIES = 3;
    private static final int MOST_SUSPECTS = 100;

    /** A suspect that has not come for so many others was taken by somebody else. */
    private static final int LAPSE_AFTER = 1_000;

    private final Map<String, Integer> suspects = new LinkedHashMap<>();
    private int others;

    static boolean isBehind(Throwable failure) {
        return ConnectorException.stemsFrom(failure, VirtualMachineError.class)
                && !ConnectorException.stemsFrom(failure, StackOverflowError.class);
    }

    /** The reason, and what to do about it, as the end of a sentence. */
    static String remedy(Throwable failure) {
        String reason = Log.rootReason(failure);
        if (!ConnectorException.stemsFrom(failure, OutOfMemoryError.class)) return reason;
        return reason + " (a larger heap, -Xmx, or a smaller prefetch of the provider's client would do)";
    }

    /** While there are suspects, as little as possible should hang on one message. */
    boolean hasSuspects() { return !suspects.isEmpty(); }

    /** True when the message has had its tries. */
    boolean isToBlame(Message message) throws JMSException {
        String id = message.getJMSMessageID();
        if (id == null) return true;   // it could not be told from the next one
        if (suspects.size() >= MOST_SUSPECTS) suspects.clear();
        others = 0;
        return suspects.merge(id, 1, Integer::sum) >= MOST_TRIES;
    }

    /** The message was read, or refused, or kept elsewhere. */
    void dealtWith(Message message) throws JMSException {
        if (suspects.isEmpty()) return;
        if (suspects.remove(message.getJMSMessageID()) == null && ++others >= LAPSE_AFTER) suspects.clear();
    }
}
