package com.morvex.kel.connectors;

import java.util.ArrayList;
import java.util.List;
import javax.jms.JMSException;

/**
 * A failure whose message is one sentence for the user: what was wrong, where, what is allowed.
 *
 * <p>It carries no stack trace of its own, because the bridge prints what it receives; the cause has one.
 * Unchecked, since no compiler makes the native callers handle it.
 */
public final class ConnectorException extends RuntimeException {
    private static final long serialVersionUID = 1L;
    private static final int LONGEST_CHAIN = 50;

    private final boolean passing;

    public ConnectorException(String sentence) { this(sentence, null); }

    public ConnectorException(String sentence, Throwable cause) { this(sentence, cause, false); }

    private ConnectorException(String sentence, Throwable cause, boolean passing) {
        super(SafeText.of(sentence), cause, false, false);
        this.passing = passing;
    }

    /** A failure that may be over at once, so that another try is worth its while. */
    static ConnectorException passing(String sentence, Throwable cause) {
        return new ConnectorException(sentence, cause, true);
    }

    boolean isPassing() { return passing; }

    /** Whether the failure, or what led to it, is of a kind. */
    static boolean stemsFrom(Throwable failure, Class<? extends Throwable> kind) {
        return chain(failure).stream().anyMatch(kind::isInstance);
    }

    /** What the failure began with; itself where nothing led to it. */
    static Throwable root(Throwable failure) {
        List<Throwable> chain = chain(failure);
        return chain.get(chain.size() - 1);
    }

    /** The failure and what led to it; bounded, because causes may go round in a circle. */
    private static List<Throwable> chain(Throwable failure) {
        List<Throwable> chain = new ArrayList<>();
        for (Throwable one = failure; one != null && chain.size() < LONGEST_CHAIN; one = causeOf(one)) chain.add(one);
        return chain;
    }

    private static Throwable causeOf(Throwable failure) {
        if (failure.getCause() != null) return failure.getCause();
        return failure instanceof JMSException jms ? jms.getLinkedException() : null;
    }
}
