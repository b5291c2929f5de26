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

    private final Map<String, Integer> suspects = new LinkedHashMap<>();

    static boolean isBehind(Throwable failure) {
        return ConnectorException.stemsFrom(failure, VirtualMachineError.class)
                && !ConnectorException.stemsFrom(failure, StackOverflowError.class);
    }

    /** What to do about it, as the end of a sentence. */
    static String remedy(Throwable failure) {
        return Log.rootReason(failure) + "; a larger heap (-Xmx) or fewer messages sent ahead (the provider's"
                + " prefetch) would do";
    }

    /** While there are suspects, as little as possible should hang on one message. */
    boolean hasSuspects() { return !suspects.isEmpty(); }

    /** True when the message has had its tries. */
    boolean isToBlame(Message message) throws JMSException {
        String id = message.getJMSMessageID();
        if (id == null) return true;   // it could not be told from the next one
        if (suspects.size() >= MOST_SUSPECTS) suspects.clear();
        return suspects.merge(id, 1, Integer::sum) >= MOST_TRIES;
    }

    /** The message was read, or refused, or kept elsewhere. */
    void forget(Message message) throws JMSException { suspects.remove(message.getJMSMessageID()); }
}
