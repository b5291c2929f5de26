package com.morvex.kel.connectors;

import java.util.function.Consumer;
import javax.jms.ExceptionListener;
import javax.jms.JMSException;

/** Hears of a connection's loss and keeps it until a handler is there: it may be lost before it is in use. */
final class ConnectionLoss implements ExceptionListener {
    private Consumer<JMSException> handler;
    private JMSException cause;

    @Override
    public void onException(JMSException exception) {
        Consumer<JMSException> known;
        synchronized (this) {
            cause = exception;
            known = handler;
        }
        if (known != null) known.accept(exception);
    }

    synchronized boolean hasHeard() { return cause != null; }

    void handleWith(Consumer<JMSException> newHandler) {
        JMSException earlier;
        synchronized (this) {
            handler = newHandler;
            earlier = cause;
        }
        if (earlier != null) newHandler.accept(earlier);
    }
}
