package com.morvex.kel.connectors;

import java.lang.System.Logger.Level;

/** The connector's log, "kel.jms": a failure is one sentence at WARNING; its stack trace is seen at DEBUG. */
final class Log {
    private static final System.Logger LOGGER = System.getLogger("kel.jms");

    private Log() {}

    static void warn(String sentence) { LOGGER.log(Level.WARNING, sentence); }

    static void info(String sentence) { LOGGER.log(Level.INFO, sentence); }

    static void warn(String sentence, Throwable cause) {
        warn(sentence);
        detail(sentence, cause);
    }

    static void detail(String text, Throwable cause) { LOGGER.log(Level.DEBUG, text, cause); }

    /** What went wrong, in one line without a full stop; the class's name where there is no text. */
    static String reason(Throwable cause) {
        String text = cause.getMessage();
        if (text == null || text.isBlank()) return cause.getClass().getName();
        text = text.replaceAll("\\s+", " ").strip();
        return text.endsWith(".") ? text.substring(0, text.length() - 1) : text;
    }
}
