package com.morvex.kel.connectors;

import java.util.List;
import java.util.concurrent.CopyOnWriteArrayList;
import java.util.logging.Handler;
import java.util.logging.LogRecord;
import java.util.logging.Logger;

/** What the connector logged, instead of the console. */
final class LogCapture extends Handler {
    private static final Logger LOGGER =
            Logger.getLogger("kel.jms");   // held, or its handler would be collected
    private static final List<String> LINES = new CopyOnWriteArrayList<>();

    static {
        LOGGER.setUseParentHandlers(false);
        LOGGER.addHandler(new LogCapture());
    }

    static void clear() { LINES.clear(); }

    static String lines() { return String.join("\n", LINES); }

    @Override
    public void publish(LogRecord entry) {
        LINES.add(entry.getMessage());
    }

    @Override
    public void flush() {}

    @Override
    public void close() {}
}
