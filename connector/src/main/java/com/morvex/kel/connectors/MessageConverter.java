package com.morvex.kel.connectors;

import javax.jms.Message;
import javax.jms.Session;

/**
 * What a user's class implements so that messages of any layout become rows, and rows messages.
 *
 * <p>The class is loaded by its name and made with its public constructor without arguments. One object
 * serves one direction of one connector, and one thread at a time. An operation that throws costs the one
 * message that it was given.
 */
public interface MessageConverter {
    /**
     * Called once, before any message.
     *
     * @param parameter the configured text, empty when there is none
     */
    void init(String parameter) throws Exception;

    /**
     * Makes a row of an incoming message.
     *
     * @return the stream's name (null: the stream that reads), the opcode (null: upsert), then the field
     *     values in column order, null for a null field; at least one field
     */
    String[] toRow(Message message) throws Exception;

    /**
     * Makes a message of an outgoing row.
     *
     * @param row stream name, opcode, then the field values in column order
     * @param session makes the message; it belongs to the connector and must not be closed
     */
    Message toMessage(String[] row, Session session) throws Exception;
}
