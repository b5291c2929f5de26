package com.morvex.kel.connectors;

/**
 * A failure whose message is one sentence for the user: what was wrong, where, what is allowed.
 *
 * <p>It carries no stack trace of its own, because the bridge prints what it receives; the cause has one.
 * Unchecked, since the methods that native code calls cannot be made to handle it by a compiler.
 */
public final class ConnectorException extends RuntimeException {
    private static final long serialVersionUID = 1L;

    public ConnectorException(String sentence) { this(sentence, null); }

    public ConnectorException(String sentence, Throwable cause) { super(sentence, cause, false, false); }
}
