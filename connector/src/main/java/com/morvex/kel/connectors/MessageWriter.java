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

    private final String[] names;

    /** @param propertyNames name of each column as a property; null when the columns are not known */
    MessageWriter(String[] propertyNames) { names = propertyNames == null ? new String[0] : propertyNames; }

    /** The body as it stands; every field that is not null becomes a String property named by its column. */
    Message text(Session session, String body, String[] fields) throws JMSException {
        int count = fields == null ? 0 : fields.length;
        if (count > names.length) {
            String tooMany = "The row has %d fields, but the stream has %d columns to name them by.";
            throw new ConnectorException(tooMany.formatted(count, names.length));
        }
        TextMessage message = session.createTextMessage(body);
        for (int i = 0; i < count; ++i) {
            if (fields[i] != null) message.setStringProperty(checkedName(i), fields[i]);
        }
        return message;
    }

    /** An ObjectMessage with the array as it stands. */
    Message array(Session session, String[] fields) throws JMSException { return session.createObjectMessage(fields); }

    private String checkedName(int column) {
        String name = names[column];
        if (isIdentifier(name) && !name.startsWith("JMS") && !RESERVED.contains(name.toUpperCase(Locale.ROOT))) {
            return name;
        }
        String invalid = "The name \"%s\" (column %d) cannot name a message property: it must be an identifier, not"
                + " begin with JMS and not be a word of the selector language.";
        throw new ConnectorException(invalid.formatted(name, column));
    }

    private static boolean isIdentifier(String name) {
        return name != null && !name.isEmpty() && Character.isJavaIdentifierStart(name.charAt(0))
                && name.chars().allMatch(Character::isJavaIdentifierPart);
    }
}
