package com.morvex.kel.connectors;

import java.util.Hashtable;
import java.util.Locale;
import java.util.Set;
import javax.jms.ConnectionFactory;
import javax.jms.Destination;
import javax.jms.Queue;
import javax.jms.Topic;
import javax.naming.Context;
import javax.naming.InitialContext;
import javax.naming.InvalidNameException;
import javax.naming.NameNotFoundException;
import javax.naming.NamingException;
import javax.naming.NoInitialContextException;

/** What the connector takes from the provider's naming service. Whatever fails is a ConnectorException. */
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
        public String toString() {
            return "Found[user=" + user + "]";
        }
    }

    private static final Set<String> REMOTE_SCHEMES =
            Set.of("ldap", "ldaps", "rmi", "dns", "iiop", "iiopname", "corbaname", "corbaloc");

    private final ConnectionSettings settings;

    JndiLookup(ConnectionSettings settings) { this.settings = settings; }

    Found lookUp() {
        requireText("jndiContextFactory", settings.jndiContextFactory());
        requireText("jndiURL", settings.jndiUrl());
        requireText("connectionFactory", settings.connectionFactory());
        requireText("destinationName", settings.destinationName());
        refuseRemoteName("connectionFactory", settings.connectionFactory());
        refuseRemoteName("destinationName", settings.destinationName());
        Context context = openContext();
        try {
            return new Found(lookUpFactory(context), lookUpDestination(context),
                    environmentText(context, Context.SECURITY_PRINCIPAL),
                    environmentText(context, Context.SECURITY_CREDENTIALS));
        } finally {
            closeQuietly(context);
        }
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
            String unusable = "The class \"%s\" (parameter jndiContextFactory) must be a JNDI context factory whose"
                    + " jars are on the class path: %s.";
            throw new ConnectorException(unusable.formatted(factory, rootReason(e)), e);
        } catch (NamingException e) {
            throw new ConnectorException(settings.provider() + " has no naming service: " + rootReason(e) + ".", e);
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
            String unbound = "The name \"%s\" (parameter connectionFactory) is not bound at \"%s\".";
            throw new ConnectorException(unbound.formatted(name, settings.jndiUrl()), e);
        } catch (NamingException e) {
            throw failedLookup("connectionFactory", name, e);
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
            throw failedLookup("destinationName", name, e);
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
            throw new ConnectorException("The parameter " + parameter + " is empty, but must be set.");
        }
    }

    /** Such a name would be looked up wherever it says, past the provider, and may bring any class to life. */
    private static void refuseRemoteName(String parameter, String name) {
        int colon = name.indexOf(':');
        if (colon < 0 || !REMOTE_SCHEMES.contains(name.substring(0, colon).strip().toLowerCase(Locale.ROOT))) return;
        String remote = "The name \"%s\" (parameter %s) is of another naming service; it must be a name at the"
                + " provider itself.";
        throw new ConnectorException(remote.formatted(name, parameter));
    }

    private static ConnectorException failedLookup(String parameter, String name, NamingException e) {
        String failed = "The look-up of \"%s\" (parameter %s) failed: %s.";
        return new ConnectorException(failed.formatted(name, parameter, rootReason(e)), e);
    }

    private static ConnectorException wrongType(String parameter, String name, Object bound, Class<?> wanted) {
        String found = bound == null ? "null" : "a " + bound.getClass().getName();
        String wrong = "The name \"%s\" (parameter %s) is bound to %s, but must be bound to a %s.";
        return new ConnectorException(wrong.formatted(name, parameter, found, wanted.getName()));
    }

    static ConnectorException missingJar(LinkageError e) {
        String missing = "A class cannot be loaded; all jars of the provider's client must be on the class path: %s.";
        return new ConnectorException(missing.formatted(rootReason(e)), e);
    }

    private static String rootReason(Throwable failure) {
        Throwable root = ConnectorException.root(failure);
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
