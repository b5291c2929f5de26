package com.morvex.kel.connectors;

import javax.jms.Connection;
import javax.jms.DeliveryMode;
import javax.jms.Destination;
import javax.jms.JMSException;
import javax.jms.Message;
import javax.jms.MessageConsumer;
import javax.jms.MessageProducer;
import javax.jms.Session;
import javax.jms.Topic;

/**
 * The Java side of the JMS bridge: connects one stream to one queue or topic of a JMS provider.
 *
 * <p>Native code finds these methods by name and signature, so neither may change. All of them run on one
 * thread, but for {@link #disconnect}, which may come from any. What native code expects as "nothing waiting"
 * is an answer of its own (an empty text, an empty array, two nulls); null is a message that was refused.
 */
public final class JmsConnector {
    private static final String NOTHING_TEXT = "";
    private static final String[] NOTHING_ARRAY = {};

    private final ConnectionSettings settings;
    private final Tuning tuning;
    private final MessageReader reader;
    private volatile Link link;
    private ConverterHolder inConverter;
    private ConverterHolder outConverter;

    /**
     * Remembers what to connect to; connects nothing.
     *
     * @param destinationType "QUEUE" for a queue, anything else for a topic
     * @param columnTypes type code of each column; null (with the two arrays after it) for discovery
     * @param mappedNames name of a column in messages where it differs from the column's own, else null
     * @param clientId used when durable, as is the subscription's name
     * @throws ConnectorException when a limit that is set as a system property is no positive integer
     */
    public JmsConnector(String connectionFactory, String destinationType, String destinationName, boolean durable,
            int[] columnTypes, String[] columnNames, String[] mappedNames, String jndiContextFactory, String jndiUrl,
            String clientId, String subscriptionName) {
        settings = new ConnectionSettings(connectionFactory, destinationType, destinationName, durable,
                ConnectionSettings.propertyNames(columnNames, mappedNames), jndiContextFactory, jndiUrl, clientId,
                subscriptionName);
        tuning = Tuning.fromSystemProperties();
        reader = new MessageReader(tuning);
    }

    /** Connects for receiving when {@code consume}, else for browsing. */
    public boolean connectForInput(boolean consume) {
        return connect(consume ? Link.Purpose.CONSUME : Link.Purpose.BROWSE);
    }

    /** Connects for sending. */
    public boolean connectForOutput() { return connect(Link.Purpose.PRODUCE); }

    public boolean initInConverter(String className, String parameter) {
        return attempt(() -> inConverter = ConverterHolder.load(className, parameter));
    }

    public boolean initOutConverter(String className, String parameter) {
        return attempt(() -> outConverter = ConverterHolder.load(className, parameter));
    }

    /** The next text, "" when nothing is waiting, null when the message was refused. */
    public String receiveTextMessage() { return receive(NOTHING_TEXT, reader::text); }

    /** The next array, an empty one when nothing is waiting, null when the message was refused. */
    public String[] receiveObjectArrayMessage(boolean withPrefix) {
        int prefixLength = withPrefix ? ConverterHolder.PREFIX_LENGTH : 0;
        return receive(NOTHING_ARRAY, message -> reader.array(message, prefixLength));
    }

    /** The next row of the converter, two nulls when nothing is waiting, null when the message was refused. */
    public String[] receiveCustomMessage() {
        return receive(new String[] {null, null}, message -> {
            reader.checkObjectFilter(message);
            return inConverter.toRow(message);
        });
    }

    public boolean sendTextMessage(String body, String[] fields) {
        return attempt(() -> link.send(session -> session.createTextMessage(body)));
    }

    public boolean sendObjectArrayMessage(String[] fields, boolean withPrefix) {
        return attempt(() -> link.send(session -> session.createObjectMessage(fields)));
    }

    public boolean sendCustomMessage(String[] fields) {
        return attempt(() -> link.send(session -> outConverter.toMessage(fields, session)));
    }

    public void commitTransaction() {
        try {
            link.commit();
        } catch (JMSException e) {
            throw new ConnectorException("The commit failed: " + Log.reason(e) + ".", e);
        }
    }

    public boolean disconnect() {
        Link open = link;
        return open == null || open.disconnect();
    }

    public String[] browseTextMessages() { throw new ConnectorException("Browsing is not supported yet."); }

    public Object[] browseObjectArrayMessages() { throw new ConnectorException("Browsing is not supported yet."); }

    public Object[] browseCustomMessages() { throw new ConnectorException("Browsing is not supported yet."); }

    private interface Action {
        void run() throws Exception;
    }

    private interface Reading<T> {
        T of(Message message) throws JMSException;
    }

    private boolean attempt(Action action) {
        try {
            action.run();
            return true;
        } catch (Exception | LinkageError e) {
            Log.warn(Log.reason(e) + ".", e);
            return false;
        }
    }

    private <T> T receive(T nothing, Reading<T> reading) {
        Link open = link;
        Message message = null;
        try {
            if (open == null) throw new ConnectorException("The connector is not connected.");
            message = open.take(tuning.receiveTimeoutMillis());
            return message == null ? nothing : reading.of(message);
        } catch (Exception e) {
            if (message == null && open != null && open.isClosing()) return nothing;
            Log.warn((message == null ? "Receiving failed: " : "A message was refused: ") + Log.reason(e) + ".", e);
            return null;
        }
    }

    private boolean connect(Link.Purpose purpose) {
        return attempt(() -> {
            JndiLookup lookup = new JndiLookup(settings);
            JndiLookup.Found found = lookup.lookUp();
            Connection connection = found.user() == null ? found.factory().createConnection()
                    : found.factory().createConnection(found.user(), found.password());
            try {
                boolean consume = purpose == Link.Purpose.CONSUME;
                boolean durable = consume && settings.durable();
                if (durable) connection.setClientID(settings.clientId());
                Session session = connection.createSession(durable,
                        consume ? Session.CLIENT_ACKNOWLEDGE : Session.AUTO_ACKNOWLEDGE);
                Destination destination = lookup.destinationFor(found, session);
                MessageConsumer consumer = null;
                MessageProducer producer = null;
                if (consume) {
                    consumer = durable ? session.createDurableSubscriber((Topic) destination,
                            settings.subscriptionName()) : session.createConsumer(destination);
                } else if (purpose == Link.Purpose.PRODUCE) {
                    producer = session.createProducer(destination);
                    producer.setDeliveryMode(DeliveryMode.PERSISTENT);
                }
                connection.start();
                link = new Link(connection, session, destination, consumer, producer);
                connection = null;
            } finally {
                if (connection != null) connection.close();
            }
        });
    }
}
