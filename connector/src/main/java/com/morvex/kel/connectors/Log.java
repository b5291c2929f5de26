package com.morvex.kel.connectors;

import java.io.PrintWriter;
import java.io.StringWriter;
import java.lang.System.Logger.Level;

/**
 * The connector's log, "kel.jms": a failure is one sentence at WARNING; its stack trace is seen at DEBUG.
 * Whatever a sender or a provider brought into a text, what is logged is safe to show.
 */
final class Log {
    private static final System.Logger LOGGER = System.getLogger("kel.jms");

    /** A converter's exception may quote a whole message. */
    private static final int LONGEST_REASON = 1_000;

    private Log() {}

    static void warn(String sentence) { LOGGER.log(Level.WARNING, SafeText.of(sentence)); }

    static void info(String sentence) { LOGGER.log(Level.INFO, SafeText.of(sentence)); }

    static void warn(String sentence, Throwable cause) {
        warn(sentence);
        detail(sentence, cause);
    }

    /** The stack trace goes as text: a logger would print the causes' own messages as they are. */
    static void detail(String text, Throwable cause) {
        if (!LOGGER.isLoggable(Level.DEBUG)) return;
        StringWriter trace = new StringWriter();
        cause.printStackTrace(new PrintWriter(trace));
        LOGGER.log(Level.DEBUG, SafeText.of(text));
        trace.toString().lines().forEach(line -> LOGGER.log(Level.DEBUG, SafeText.of(line.replace('\t', ' '))));
    }

    /** What went wrong, in one line without a full stop; the class's name where there is no text. */
    static String reason(Throwable cause) {
        String text = cause.getMessage();
        if (text == null || text.isBlank()) return cause.getClass().getName();
        if (text.length() > LONGEST_REASON) text = text.substring(0, LONGEST_REASON) + "...";
        text = text.replaceAll("\\s+", " ").strip();
        return text.endsWith(".") ? text.substring(0, text.length() - 1) : text;
    }

    /**
     * The reason at the bottom of a failure, which stays the same whatever is wrapped around it. The text of a
     * programming error, such as "-1", says nothing without its class.
     */
    static String rootReason(Throwable cause) {
        Throwable root = ConnectorException.root(cause);
        boolean isMistake = root instanceof RuntimeException && !(root instanceof ConnectorException);
        return isMistake ? root.getClass().getSimpleName() + ": " + reason(root) : reason(root);
    }
}
