package com.morvex.kel.connectors;

import javax.jms.JMSException;

/**
 * A failure whose message is one sentence for the user: what was wrong, where, what is allowed.
 *
 * <p>It carries no stack trace of its own, because the bridge prints what it receives; the cause has one.
 * Unchecked, since no compiler makes the native callers handle it.
 */
public final class ConnectorException extends RuntimeException {
    private static final long serialVersionUID = 1L;

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
        for (Throwable one = failure; one != null; one = causeOf(one)) {
            if (kind.isInstance(one)) return true;
        }
        return false;
    }

    /** What the failure began with; itself where nothing led to it. */
    static Throwable root(Throwable failure) {
        Throwable root = failure;
        for (Throwable cause = causeOf(root); cause != null; cause = causeOf(root)) root = cause;
        return root;
    }

    private static Throwable causeOf(Throwable failure) {
        if (failure.getCause() != null) return failure.getCause();
        Throwable linked = failure instanceof JMSException jms ? jms.getLinkedException() : null;
        return linked == failure ? null : linked;
    }
}
