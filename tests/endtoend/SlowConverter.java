package com.morvex.kel.connectors.tests;

import com.morvex.kel.connectors.MessageConverter;
import javax.jms.Message;
import javax.jms.Session;
import javax.jms.TextMessage;

/** Takes its time with every CSV text, and leaves its thread interrupted. */
public final class SlowConverter implements MessageConverter {
    @Override
    public void init(String parameter) {}

    @Override
    public String[] toRow(Message message) throws Exception {
        Thread.sleep(10);
        Thread.currentThread().interrupt();
        return ((TextMessage) message).getText().split(",");
    }

    @Override
    public Message toMessage(String[] row, Session session) { return null; }
}
