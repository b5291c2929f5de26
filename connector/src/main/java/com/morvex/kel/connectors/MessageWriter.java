package com.morvex.kel.connectors;

import java.util.Locale;
import java.util.Set;
import javax.jms.JMSException;
import javax.jms.Message;
import javax.jms.Session;
import javax.jms.TextMessage;

/** Makes messages of texts and rows. What cannot be made is refused with a {@link ConnectorException}. */
final class MessageWriter {
    /** Words of the selector language, in which a property could never be named. */
    private static final Set<String> RESERVED =
            Set.of("NULL", "TRUE", "FALSE", "NOT", "AND", "OR", "BETWEEN", "LIKE", "IN", "IS", "ESCAPE");

    private final String[] propertyNames;

    /** @param propertyNames name of each column as a property; null when the columns are not known */
    MessageWriter(String[] propertyNames) { this.propertyNames = propertyNames == null ? new String[0] : propertyNames; }

    /** The body as it stands; every field that is not null becomes a String property named by its column. */
    Message text(Session session, String body, String[] fields) throws JMSException {
        int count = fields == null ? 0 : fields.length;
        if (count > propertyNames.length) {
            throw new ConnectorException("The row has " + count + " fields, but the stream has "
                    + propertyNames.length + " columns to name them by.");
        }
        TextMessage message = session.createTextMessage(body);
        for (int i = 0; i < count; ++i) {
            if (fields[i] != null) message.setStringProperty(checkedName(i), fields[i]);
        }
        return message;
    }

    /** An ObjectMessage with the array as it stands. */
    Message array(Session session, String[] fields) throws JMSException {
        return session.createObjectMessage(fields);
    }

    private String checkedName(int column) {
        String name = propertyNames[column];
        boolean valid = name != null && !name.isEmpty() && Character.isJavaIdentifierStart(name.charAt(0))
                && name.chars().allMatch(Character::isJavaIdentifierPart)
                && !name.startsWith("JMS") && !RESERVED.contains(name.toUpperCase(Locale.ROOT));
        if (valid) return name;
        throw new ConnectorException("The column name \"" + name + "\" (column " + column
                + ") cannot name a message property: it must be an identifier that does not begin with JMS and is no"
                + " word of the selector language.");
    }
}
