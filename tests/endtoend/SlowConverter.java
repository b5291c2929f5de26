package com.morvex.kel.connectors.tests;

import com.morvex.kel.connectors.MessageConverter;
import javax.jms.Message;
import javax.jms.Session;
import javax.jms.TextMessage;

/** Takes its time with every CSV text, for ever with one that says so, and leaves its thread interrupted. */
public final class SlowConverter implements MessageConverter {
    @Override
    public void init(String parameter) {}

    @Override
    public String[] toRow(Message message) throws Exception {
        String text = ((TextMessage) message).getText();
        do {
            try {
                Thread.sleep(10);
            } catch (InterruptedException e) {
                // deaf to it
            }
        } while (text.contains("for ever"));
        Thread.currentThread().interrupt();
        return text.split(",");
    }

    @Override
    public Message toMessage(String[] row, Session session) {
        return null;
    }
}
