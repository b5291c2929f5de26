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
    private final Settling settling;
    private final ConnectionKeeper keeper;
    private final Batch batch;   // null unless a host settles
    private final MessageReader reader;
    private final MessageWriter writer;
    private ConverterHolder inConverter;
    private ConverterHolder outConverter;
    private final MemoryShortage memory = new MemoryShortage();
    private Link lastRead;   // what a commit is for

    /**
     * Remembers what to connect to; connects nothing.
     *
     * @param destinationType "QUEUE" for a queue, anything else for a topic
     * @param columnTypes kind of each column's type, which nothing here needs; null, like the names, for discovery
     * @param mappedNames name of a column in messages where it differs from the column's own, else null
     * @param clientId used for a durable subscription only, as is the subscription's name
     * @throws ConnectorException when a limit that is set as a system property is no positive integer
     */
    public JmsConnector(String connectionFactory, String destinationType, String destinationName, boolean durable,
            int[] columnTypes, String[] columnNames, String[] mappedNames, String jndiContextFactory, String jndiUrl,
            String clientId, String subscriptionName) {
        settings = new ConnectionSettings(connectionFactory, destinationType, destinationName, durable,
                ConnectionSettings.propertyNames(columnNames, mappedNames), jndiContextFactory, jndiUrl, clientId,
                subscriptionName);
        tuning = Tuning.fromSystemProperties();
        settling = Settling.fromSystemProperties();
        keeper = new ConnectionKeeper(tuning, this);
        batch = settling.byHost() ? new Batch(keeper, settling, new MessageBody(tuning)) : null;
        reader = new MessageReader(tuning);
        writer = new MessageWriter(settings.propertyNames());
        CLEANER.register(this, keeper::disconnect);
    }

    /**
     * How the connections are of all connectors of this process that receive: 0 when each is open, 1 while one
     * is being made again, also by the provider's client itself, 2 when one is given up. Any thread.
     */
    public static int connectionState() {
        if (OpenConnectors.any(ConnectionKeeper::hasGivenUp)) return 2;
        return OpenConnectors.any(ConnectionKeeper::isWithoutConnection) ? 1 : 0;
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
     * Commits the messages received since the last commit; where a host settles them, does nothing.
     *
     * @throws CommitFailure when that failed; the messages then may come again
     */
    public void commitTransaction() {
        Link link = lastRead;
        if (link == null || batch != null) return;
        keeper.enters();
        try {
            link.commit();
        } catch (JMSException | RuntimeException | Error e) {
            CommitFailure.tell(keeper, link, e);
            throw new CommitFailure();
        } finally {
            keeper.leaves();
        }
    }

    /**
     * Ends a waiting receive and closes the connection, from any thread; never commits. From another thread than the
     * reader's it first waits, three seconds at most, for the reader to have dealt with what it has in hand.
     */
    public boolean disconnect() {
        try {
            return keeper.disconnect();
        } catch (Error e) {   // no thread for the closing
            Log.warn("The connection could not be closed: " + Log.reason(e) + ".", e);
            return false;
        }
    }

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
        if (purpose == LinkOpener.Purpose.CONSUME) Delivery.isFor(batch);
        return attempt(() -> keeper.connect(new LinkOpener(settings, settling, purpose)));
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
        if (batch == null) return receiveNext(nothing, reading);
        Delivery.isFor(batch);
        if (!batch.mayGrow(memory.hasSuspects())) return nothing;
        int before = batch.count();
        T read = null;
        try {
            read = receiveNext(nothing, reading);
            if (read != nothing && read instanceof String[] texts && texts.length > 0) batch.beginsWith(texts[0]);
            return read;
        } finally {
            batch.align(before + (read == nothing ? 0 : 1));
        }
    }

    private <T> T receiveNext(T nothing, Reading<T> reading) {
        keeper.enters();
        try {
            if (batch == null && lastRead != null && lastRead.isClosing()) lastRead.readerIsBack();
            Link link = keeper.await(batch == null || batch.isEmpty() ? tuning.receiveTimeoutMillis() : 0);
            if (link == null || (batch != null && !batch.mayTakeFrom(link))) return nothing;
            lastRead = link;
            Message message = take(link);
            return message == null ? nothing : read(link, message, nothing, reading);
        } catch (ConnectorException e) {
            Log.warn(Log.reason(e) + ".", e);
            return null;
        } finally {
            keeper.leaves();
        }
    }

    private Message take(Link link) {
        try {
            return link.take(tuning.receiveTimeoutMillis(), memory.hasSuspects());
        } catch (ConnectorException e) {
            throw e;
        } catch (JMSException | RuntimeException | Error e) {
            // With some providers closing ends the wait like this. Otherwise the link has failed, which is no
            // bad message.
            if (!link.isClosing()) keeper.lost(link, e);
            return null;
        }
    }

    /** What the message says; null when it cannot be used, nothing when it was left to come again. */
    private <T> T read(Link link, Message message, T nothing, Reading<T> reading) {
        try {
            if (batch != null) batch.add(link, message);
            T read = reading.of(message);
            if (memory.hasSuspects()) memory.dealtWith(message);
            return read;
        } catch (JMSException | RuntimeException | Error e) {   // one message must not end the others
            if (MemoryShortage.isBehind(e)) return isGivenBack(link, message, e) ? nothing : null;
            forgetSuspect(message);
            tellRefused(refusal(message, e), e);
            return null;
        }
    }

    private void forgetSuspect(Message message) {
        try {
            if (memory.hasSuspects()) memory.dealtWith(message);
        } catch (JMSException e) {
            Log.detail("A message does not tell its ID.", e);
        }
    }

    private static String refusal(Message message, Throwable e) {
        return "The message " + idOf(message) + " was refused: " + Log.reason(e) + ".";
    }

    /** The host, where there is one, tells of it. */
    private void tellRefused(String sentence, Throwable e) {
        if (batch == null) {
            Log.warn(sentence, e);
        } else {
            batch.refuse(sentence);
            Log.detail(sentence, e);
        }
    }

    /** Whether a message that found too little memory will come again; else it has had its tries. */
    private boolean isGivenBack(Link link, Message message, Throwable e) {
        boolean isDealtWith = false;
        try {
            if (memory.isToBlame(message)) {
                boolean kept = link.keepAside(message);
                isDealtWith = !link.hasEnded();
                if (isDealtWith) sayBlamed(message, e, kept);
            }
        } catch (JMSException | RuntimeException | Error again) {
            Log.detail("A message could not be kept aside.", again);
        } finally {
            // Before anything else that needs memory, and whatever came out of the try.
            if (!isDealtWith) link.giveBack();
        }
        if (!isDealtWith) keeper.lost(link, shortage(message, e));
        return !isDealtWith;
    }

    private void sayBlamed(Message message, Throwable e, boolean kept) throws JMSException {
        memory.dealtWith(message);
        String end = kept ? "was left to the provider, whose rules for dead letters decide about it" : "was refused";
        String sentence = "The message %s could not be read for want of memory %d times and %s: %s.";
        tellRefused(sentence.formatted(idOf(message), MemoryShortage.MOST_TRIES, end, MemoryShortage.remedy(e)), e);
    }

    /** The failure itself where there is no memory for a sentence. */
    private static Throwable shortage(Message message, Throwable e) {
        try {
            String sentence = "the message %s could not be read: %s";
            return new ConnectorException(sentence.formatted(idOf(message), MemoryShortage.remedy(e)), e);
        } catch (Error again) {
            return e;
        }
    }

    private String[] converted(Message message) throws JMSException {
        reader.checkForConverter(message);
        return inConverter.toRow(message);
    }

    /** Sends a message made of what {@link Delivery} told of another one. */
    boolean replay(byte[] body, String[] description, String replayOf) {
        return send(session -> Replay.message(session, new MessageBody(tuning), body, description, replayOf));
    }

    private boolean send(Link.MessageMaker maker) {
        return attempt(() -> {
            Link link = keeper.await(tuning.receiveTimeoutMillis());
            if (link == null) throw new ConnectorException("The message was not sent: there is no connection.");
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
            for (Message message : new Browser(tuning, settling).messages(link)) {
                T read = looked(message, reading);
                if (read != null) found.add(read);
            }
        } catch (JMSException | RuntimeException e) {
            Log.detail("Browsing failed.", e);
            String sentence = "Browsing %s failed: %s.";
            throw new ConnectorException(sentence.formatted(settings.destination(), Log.reason(e)));
        }
        return found;
    }

    /** Null, and one sentence in the log, for a message that cannot be used. */
    private static <T> T looked(Message message, Reading<T> reading) {
        try {
            return reading.of(message);
        } catch (JMSException | RuntimeException | Error e) {   // one message must not end the others
            Log.warn(refusal(message, e), e);
            return null;
        }
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
