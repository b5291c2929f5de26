package com.morvex.kel.connectors;

import java.io.IOException;
import java.net.ConnectException;
import java.net.NoRouteToHostException;
import java.net.SocketTimeoutException;
import java.net.UnknownHostException;
import java.util.List;
import java.util.function.Consumer;
import javax.jms.Connection;
import javax.jms.DeliveryMode;
import javax.jms.Destination;
import javax.jms.InvalidClientIDException;
import javax.jms.InvalidSelectorException;
import javax.jms.JMSException;
import javax.jms.JMSSecurityException;
import javax.jms.MessageConsumer;
import javax.jms.MessageProducer;
import javax.jms.Session;
import javax.jms.Topic;

/** Makes links: looks up, logs in, makes session, consumer or producer, starts. */
final class LinkOpener {
    /** What a connection is for. */
    enum Purpose { CONSUME, BROWSE, PRODUCE }

    private static final List<Class<? extends IOException>> NOBODY_THERE = List.of(ConnectException.class,
            NoRouteToHostException.class, UnknownHostException.class, SocketTimeoutException.class);

    private final ConnectionSettings settings;
    private final Settling settling;
    private final Purpose purpose;

    LinkOpener(ConnectionSettings settings, Settling settling, Purpose purpose) {
        this.settings = settings;
        this.settling = settling;
        this.purpose = purpose;
    }

    /** Only a consumer takes the client ID: whoever browses must not collide with it. */
    boolean usesClientId() { return purpose == Purpose.CONSUME && settings.durable(); }

    boolean receives() { return purpose == Purpose.CONSUME; }

    ConnectionSettings settings() { return settings; }

    /**
     * Opens a link, for as long as the provider takes.
     *
     * @param onConnection gets the connection as soon as there is one, so that another thread can close it
     * @throws ConnectorException with the failure's sentence; nothing is left open
     */
    Link open(Consumer<Connection> onConnection) {
        if (usesClientId() && settings.isQueue()) {
            throw new ConnectorException(
                    "A durable subscription needs a topic, but the parameter destinationType is QUEUE.");
        }
        JndiLookup.Found found = new JndiLookup(settings).lookUp();
        Connection connection = null;
        Link link = null;
        try {
            connection = found.user() == null ? found.factory().createConnection()
                                              : found.factory().createConnection(found.user(), found.password());
            onConnection.accept(connection);
            link = openOn(connection, found);
            return link;
        } catch (JMSException e) {
            throw explained(e, found.user(), connection != null);
        } catch (LinkageError e) {
            throw JndiLookup.missingJar(e);
        } finally {
            if (connection != null && link == null) Closer.inBackground(connection);
        }
    }

    private Link openOn(Connection connection, JndiLookup.Found found) throws JMSException {
        ConnectionLoss loss = new ConnectionLoss();
        connection.setExceptionListener(loss);
        boolean durable = usesClientId();
        if (durable) connection.setClientID(settings.clientId());
        int mode = receives() ? Session.CLIENT_ACKNOWLEDGE : Session.AUTO_ACKNOWLEDGE;
        Session session = connection.createSession(durable || (receives() && settling.transacted()), mode);
        Destination destination = destination(found, session);
        MessageConsumer consumer = null;
        MessageProducer producer = null;
        if (purpose == Purpose.PRODUCE) {
            producer = session.createProducer(destination);
            producer.setDeliveryMode(DeliveryMode.PERSISTENT);
        } else if (durable) {
            String name = settings.subscriptionName();
            consumer = session.createDurableSubscriber((Topic) destination, name, settling.selector(), false);
        } else if (receives()) {
            consumer = session.createConsumer(destination, settling.selector());
        }
        connection.start();
        return new Link(connection, session, destination, consumer, producer, loss, settling.byHost());
    }

    private Destination destination(JndiLookup.Found found, Session session) throws JMSException {
        if (found.destination() != null) return found.destination();
        String name = settings.destinationName();
        return settings.isQueue() ? session.createQueue(name) : session.createTopic(name);
    }

    private ConnectorException explained(JMSException e, String user, boolean reached) {
        String provider = settings.provider();
        String destination = settings.destination();
        if (ConnectorException.stemsFrom(e, InvalidSelectorException.class)) {
            return new ConnectorException("The " + settling.faultOfSelector(e) + ".", e);
        }
        boolean isForMemory = MemoryShortage.isBehind(e);
        String reason = (isForMemory ? MemoryShortage.remedy(e) : Log.rootReason(e)) + ".";
        if (ConnectorException.stemsFrom(e, InvalidClientIDException.class)) {
            String taken = "The client ID \"%s\" (parameter clientID) must be free and valid: %s";
            return ConnectorException.passing(taken.formatted(settings.clientId(), reason), e);
        }
        if (ConnectorException.stemsFrom(e, JMSSecurityException.class)
                || ConnectorException.stemsFrom(e, SecurityException.class)) {
            String login = user == null ? "a connection without a login" : "the login of \"" + user + "\"";
            String refused = "%s refuses %s (java.naming.security.principal) or its access to %s: %s";
            return new ConnectorException(refused.formatted(provider, login, destination, reason), e);
        }
        // At the root, because a client that looks for a broker by itself wraps it in much else.
        Throwable root = ConnectorException.root(e);
        boolean isInput = root instanceof IOException;
        if ((isInput && !reached) || NOBODY_THERE.stream().anyMatch(kind -> kind.isInstance(root))) {
            return new ConnectorException(provider + " is not reachable: " + reason, e);
        }
        if (isInput) {
            // A broker that refuses a login or a client ID sometimes hangs up before it has said so.
            return ConnectorException.passing(provider + " ended the connection at once: " + reason, e);
        }
        return new ConnectorException(provider + " cannot be used for " + destination + ": " + reason, e);
    }
}
