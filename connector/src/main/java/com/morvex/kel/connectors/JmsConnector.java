package com.morvex.kel.connectors;

import java.lang.ref.Cleaner;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import javax.jms.JMSException;
import javax.jms.Message;

/**
 * The Java side of the JMS bridge: connects one stream to one queue or topic of a JMS provider.
 *
 * <p>Native code finds these methods by name and signature, so neither may change. All of them run on one
 * thread, but for {@link #disconnect}, which may come from any. "Nothing waiting" is an answer of its own (an
 * empty text, an empty array, two nulls), also while a lost connection is made again; null is a message that
 * cannot be used. What fails is logged as one sentence.
 */
public final class JmsConnector {
    private static final Cleaner CLEANER = Cleaner.create();
    private static final int PREFIX_LENGTH = ConverterHolder.PREFIX_LENGTH;

    private final ConnectionSettings settings;
    private final Tuning tuning;
    private final ConnectionKeeper keeper;
    private final MessageReader reader;
    private final MessageWriter writer;
    private ConverterHolder inConverter;
    private ConverterHolder outConverter;
    private Link lastRead;   // what a commit is for

    /**
     * Remembers what to connect to; connects nothing.
     *
     * @param destinationType "QUEUE" for a queue, anything else for a topic
     * @param columnTypes type code of each column; null, like the names, for discovery
     * @param mappedNames name of a column in messages where it differs from the column's own, else null
     * @param clientId used for a durable subscription only, as is the subscription's name
     * @throws ConnectorException when a limit that is set as a system property is no positive integer
     */
    public JmsConnector(String connectionFactory, String destinationType, String destinationName,
            boolean durable, int[] columnTypes, String[] columnNames, String[] mappedNames,
            String jndiContextFactory, String jndiUrl, String clientId, String subscriptionName) {
        settings = new ConnectionSettings(connectionFactory, destinationType, destinationName, durable,
                ConnectionSettings.propertyNames(columnNames, mappedNames), jndiContextFactory, jndiUrl,
                clientId, subscriptionName);
        tuning = Tuning.fromSystemProperties();
        keeper = new ConnectionKeeper(tuning);
        reader = new MessageReader(tuning);
        writer = new MessageWriter(settings.propertyNames());
        CLEANER.register(this, keeper::disconnect);
    }

    /** Connects for receiving when {@code consume}, else for browsing; false when that failed. */
    public boolean connectForInput(boolean consume) {
        return connect(consume ? LinkOpener.Purpose.CONSUME : LinkOpener.Purpose.BROWSE);
    }

    /** Connects for sending; false when that failed. */
    public boolean connectForOutput() { return connect(LinkOpener.Purpose.PRODUCE); }

    /** Loads the {@link MessageConverter} for incoming messages; false, and disconnected, when that failed. */
    public boolean initInConverter(String className, String parameter) {
        if (attempt(() -> inConverter = ConverterHolder.load(className, parameter))) return true;
        // The start fails with it; nobody else would close a consumer, which keeps messages from others.
        disconnect();
        return false;
    }

    /** Loads the {@link MessageConverter} for outgoing rows; false when that failed. */
    public boolean initOutConverter(String className, String parameter) {
        return attempt(() -> outConverter = ConverterHolder.load(className, parameter));
    }

    /** The next text; "" when nothing is waiting, null for a message that cannot be used. */
    public String receiveTextMessage() { return receive("", reader::text); }

    /**
     * The next array; an empty one when nothing is waiting, null for a message that cannot be used.
     *
     * @param withPrefix whether stream name and opcode stand before the fields
     */
    public String[] receiveObjectArrayMessage(boolean withPrefix) {
        int prefixLength = withPrefix ? PREFIX_LENGTH : 0;
        return receive(new String[0], message -> reader.array(message, prefixLength));
    }

    /** The converter's next row; two nulls when nothing is waiting, null for an unusable message. */
    public String[] receiveCustomMessage() {
        if (!attempt(() -> requireConverter(inConverter, "initInConverter"))) return null;
        return receive(new String[] {null, null}, this::converted);
    }

    /**
     * Sends a text.
     *
     * @param body handed through
     * @param fields become String properties named by the columns; null fields are left out
     */
    public boolean sendTextMessage(String body, String[] fields) {
        return send(session -> writer.text(session, body, fields));
    }

    /** Sends the array as it stands; whether it has the prefix makes no difference to the message. */
    public boolean sendObjectArrayMessage(String[] fields, boolean withPrefix) {
        return send(session -> writer.array(session, fields));
    }

    /** Sends what the converter makes of stream name, opcode and fields. */
    public boolean sendCustomMessage(String[] fields) {
        return attempt(() -> requireConverter(outConverter, "initOutConverter"))
                && send(session -> outConverter.toMessage(fields, session));
    }

    /**
     * Commits the messages received since the last commit.
     *
     * @throws ConnectorException when that failed; the messages then come again
     */
    public void commitTransaction() {
        Link link = lastRead;
        if (link == null) return;
        try {
            link.commit();
        } catch (JMSException | RuntimeException e) {
            String sentence = "The commit failed and %d messages will come again: %s.".formatted(
                    link.pending(), Log.reason(e));
            Log.warn(sentence, e);
            // The session's state is anybody's guess now; a new one begins after the last good commit.
            keeper.lost(link, e);
            // Without the cause: the bridge prints what it catches, and the stack is in the log.
            throw new ConnectorException(sentence);
        }
    }

    /** Ends a waiting receive and closes the connection, from any thread; never commits. */
    public boolean disconnect() { return keeper.disconnect(); }

    /** The texts of waiting messages, none of which is taken; never null. */
    public String[] browseTextMessages() { return browse(reader::text).toArray(new String[0]); }

    /** The arrays of waiting messages, as they stand; each element is a String[] without nulls. */
    public Object[] browseObjectArrayMessages() {
        return browse(message -> withoutNulls(reader.array(message, 0))).toArray();
    }

    /** The converter's rows of waiting messages; each element is a String[] without nulls. */
    public Object[] browseCustomMessages() {
        requireConverter(inConverter, "initInConverter");
        return browse(message -> withoutNulls(converted(message))).toArray();
    }

    private interface Reading<T> {
        T of(Message message) throws JMSException;
    }

    private boolean connect(LinkOpener.Purpose purpose) {
        // A thread that native code attached has none; the provider's client looks for its classes there.
        Thread thread = Thread.currentThread();
        if (thread.getContextClassLoader() == null) thread.setContextClassLoader(getClass().getClassLoader());
        return attempt(() -> keeper.connect(new LinkOpener(settings, purpose)));
    }

    private static boolean attempt(Runnable action) {
        try {
            action.run();
            return true;
        } catch (ConnectorException e) {
            Log.warn(Log.reason(e) + ".", e);
        } catch (RuntimeException | Error e) {
            // a mistake of the provider's client or of a converter
            Log.warn("The operation failed with a " + e.getClass().getName() + ": " + Log.reason(e) + ".", e);
        }
        return false;
    }

    private <T> T receive(T nothing, Reading<T> reading) {
        Message message;
        try {
            message = take();
        } catch (ConnectorException e) {
            Log.warn(e.getMessage(), e);
            return null;
        }
        return message == null ? nothing : read(message, reading);
    }

    private Message take() {
        Link link = keeper.await(tuning.receiveTimeoutMillis());
        if (link == null) return null;
        lastRead = link;
        try {
            return link.take(tuning.receiveTimeoutMillis());
        } catch (ConnectorException e) {
            throw e;
        } catch (JMSException | RuntimeException e) {
            // With some providers closing ends the wait like this. Otherwise the link has failed, which is no
            // bad message.
            if (!link.isClosing()) keeper.lost(link, e);
            return null;
        }
    }

    /** What the message says; null, and one sentence in the log, when it cannot be used. */
    private static <T> T read(Message message, Reading<T> reading) {
        try {
            return reading.of(message);
        } catch (JMSException | RuntimeException | Error e) {   // one message must not end the others
            Log.warn("The message " + idOf(message) + " was refused: " + Log.reason(e) + ".", e);
            return null;
        }
    }

    private String[] converted(Message message) throws JMSException {
        reader.checkForConverter(message);
        return inConverter.toRow(message);
    }

    private boolean send(Link.MessageMaker maker) {
        return attempt(() -> {
            Link link = keeper.await(tuning.receiveTimeoutMillis());
            if (link == null) throw new ConnectorException("The message was not sent: no connection.");
            try {
                link.send(maker);
            } catch (ConnectorException e) {
                throw e;   // the message, not the link
            } catch (JMSException | RuntimeException e) {
                keeper.lost(link, e);
                throw new ConnectorException("The message was not sent: " + Log.reason(e) + ".", e);
            }
        });
    }

    private <T> List<T> browse(Reading<T> reading) {
        Link link = keeper.await(tuning.receiveTimeoutMillis());
        if (link == null) throw new ConnectorException("Browsing failed: there is no connection.");
        List<T> found = new ArrayList<>();
        try {
            for (Message message : new Browser(tuning).messages(link)) {
                T read = read(message, reading);
                if (read != null) found.add(read);
            }
        } catch (JMSException | RuntimeException e) {
            Log.detail("Browsing failed.", e);
            String sentence = "Browsing %s failed: %s.";
            throw new ConnectorException(sentence.formatted(settings.destination(), Log.reason(e)));
        }
        return found;
    }

    private static void requireConverter(ConverterHolder converter, String operation) {
        if (converter == null) throw new ConnectorException("No converter is there; call " + operation + ".");
    }

    private static String[] withoutNulls(String[] row) {
        return Arrays.stream(row).map(text -> text == null ? "" : text).toList().toArray(new String[0]);
    }

    private static String idOf(Message message) {
        try {
            return message.getJMSMessageID();
        } catch (JMSException e) {
            return "without an ID";
        }
    }
}
