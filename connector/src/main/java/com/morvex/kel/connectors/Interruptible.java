package com.morvex.kel.connectors;

import javax.jms.JMSException;

/** A call of the provider that may never return, and that another thread may interrupt. */
final class Interruptible {
    interface Call {
        void run() throws JMSException;
    }

    // Guarded by this.
    private Thread inside;
    private boolean interrupted;

    void run(Call call) throws JMSException {
        synchronized (this) { inside = Thread.currentThread(); }
        try {
            call.run();
        } finally {
            synchronized (this) {
                inside = null;
                // It was meant for the call, not for what the thread does next.
                if (interrupted) Thread.interrupted();
                interrupted = false;
            }
        }
    }

    /** False when no thread is inside. */
    synchronized boolean interrupt() {
        if (inside == null) return false;
        interrupted = true;
        inside.interrupt();
        return true;
    }
}
