package com.morvex.kel.connectors;

import java.util.Hashtable;
import javax.jms.ConnectionFactory;
import javax.jms.Destination;
import javax.jms.JMSException;
import javax.jms.Queue;
import javax.jms.Session;
import javax.jms.Topic;
import javax.naming.Context;
import javax.naming.InitialContext;
import javax.naming.InvalidNameException;
import javax.naming.NameNotFoundException;
import javax.naming.NamingException;
import javax.naming.NoInitialContextException;

/** What the connector takes from the provider's naming service. Every failure is a {@link ConnectorException}. */
final class JndiLookup {
    /**
     * What a connection is made from.
     *
     * @param destination null when the name is not bound: the session then makes the destination by its name
     * @param user null when no login is configured
     */
    record Found(ConnectionFactory factory, Destination destination, String user, String password) {
        /** Hides the password. */
        @Override
        public String toString() { return "Found[user=" + user + "]"; }
    }

    private final ConnectionSettings settings;

    JndiLookup(ConnectionSettings settings) { this.settings = settings; }

    Found lookUp() {
        requireText("connectionFactory", settings.connectionFactory());
        requireText("destinationName", settings.destinationName());
        Context context = openContext();
        try {
            return new Found(lookUpFactory(context), lookUpDestination(context),
                    environmentText(context, Context.SECURITY_PRINCIPAL),
                    environmentText(context, Context.SECURITY_CREDENTIALS));
        } finally {
            closeQuietly(context);
        }
    }

    /** The destination that was bound, or the one that the provider makes of the configured name. */
    Destination destinationFor(Found found, Session session) throws JMSException {
        if (found.destination() != null) return found.destination();
        String name = settings.destinationName();
        return settings.isQueue() ? session.createQueue(name) : session.createTopic(name);
    }

    private Context openContext() {
        String factory = settings.jndiContextFactory();
        Hashtable<String, String> environment = new Hashtable<>();
        environment.put(Context.INITIAL_CONTEXT_FACTORY, factory);
        environment.put(Context.PROVIDER_URL, settings.jndiUrl());
        // JNDI itself adds jndi.properties, but of the system properties it takes neither of these.
        for (String name : new String[] {Context.SECURITY_PRINCIPAL, Context.SECURITY_CREDENTIALS}) {
            String value = System.getProperty(name);
            if (value != null) environment.put(name, value);
        }
        try {
            return new InitialContext(environment);
        } catch (NoInitialContextException e) {
            throw new ConnectorException("The class \"" + factory + "\" (parameter jndiContextFactory) cannot be used"
                    + " as JNDI context factory: " + rootReason(e)
                    + "; it must be a context factory whose jars are on the class path.", e);
        } catch (NamingException e) {
            throw new ConnectorException("The JNDI provider at \"" + settings.jndiUrl()
                    + "\" (parameter jndiURL) cannot be used: " + rootReason(e) + ".", e);
        } catch (LinkageError e) {
            throw missingJar(e);
        }
    }

    private ConnectionFactory lookUpFactory(Context context) {
        String name = settings.connectionFactory();
        Object bound;
        try {
            bound = context.lookup(name);
        } catch (NameNotFoundException e) {
            throw new ConnectorException("The name \"" + name + "\" (parameter connectionFactory) is not bound in the"
                    + " JNDI provider at \"" + settings.jndiUrl() + "\".", e);
        } catch (NamingException e) {
            throw new ConnectorException("The look-up of \"" + name + "\" (parameter connectionFactory) failed: "
                    + rootReason(e) + ".", e);
        } catch (LinkageError e) {
            throw missingJar(e);
        }
        if (bound instanceof ConnectionFactory factory) return factory;
        throw wrongType("connectionFactory", name, bound, ConnectionFactory.class);
    }

    private Destination lookUpDestination(Context context) {
        String name = settings.destinationName();
        Object bound;
        try {
            bound = context.lookup(name);
        } catch (NameNotFoundException | InvalidNameException | NoInitialContextException e) {
            return null;
        } catch (NamingException e) {
            throw new ConnectorException("The look-up of \"" + name + "\" (parameter destinationName) failed: "
                    + rootReason(e) + ".", e);
        }
        Class<?> wanted = settings.isQueue() ? Queue.class : Topic.class;
        if (wanted.isInstance(bound)) return (Destination) bound;
        throw wrongType("destinationName", name, bound, wanted);
    }

    private static String environmentText(Context context, String name) {
        try {
            return context.getEnvironment().get(name) instanceof String text ? text : null;
        } catch (NamingException e) {
            Log.detail("The JNDI context does not show its environment.", e);
            return System.getProperty(name);
        }
    }

    private static void requireText(String parameter, String value) {
        if (value == null || value.isEmpty()) {
            throw new ConnectorException("The parameter " + parameter + " is empty, but must hold a name.");
        }
    }

    private static ConnectorException wrongType(String parameter, String name, Object bound, Class<?> wanted) {
        return new ConnectorException("The name \"" + name + "\" (parameter " + parameter + ") is bound to a "
                + (bound == null ? "null" : bound.getClass().getName()) + ", but must be bound to a "
                + wanted.getName() + ".");
    }

    static ConnectorException missingJar(LinkageError e) {
        return new ConnectorException("A class of the provider cannot be loaded (" + rootReason(e)
                + "); all jars of its client must be on the class path.", e);
    }

    private static String rootReason(Throwable failure) {
        Throwable root = failure;
        while (root.getCause() != null) root = root.getCause();
        String name = root.getClass().getSimpleName();
        String reason = Log.reason(root);
        return reason.contains(name) ? reason : name + ": " + reason;
    }

    private static void closeQuietly(Context context) {
        try {
            context.close();
        } catch (NamingException e) {
            Log.detail("The naming context could not be closed.", e);
        }
    }
}
