package com.morvex.kel.connectors;

import static org.junit.Assert.assertTrue;

import java.util.*;
import java.util.concurrent.CopyOnWriteArrayList;
import java.util.concurrent.atomic.AtomicReference;
import java.util.concurrent.locks.LockSupport;
import java.util.function.BooleanSupplier;
import java.util.logging.LogRecord;
import java.util.logging.Logger;
import java.util.stream.IntStream;
import javax.jms.*;
import org.apache.activemq.ActiveMQConnectionFactory;
import org.apache.activemq.broker.BrokerPlugin;
import org.apache.activemq.broker.BrokerService;
import org.apache.activemq.command.ActiveMQDestination;
import org.apache.activemq.command.ActiveMQQueue;
import org.apache.activemq.command.ActiveMQTopic;
import org.apache.activemq.security.AuthenticationUser;
import org.apache.activemq.security.SimpleAuthenticationPlugin;
import org.junit.*;
import org.junit.function.ThrowingRunnable;

/**
 * A broker of the tests' own process on a free port, connectors to it, and what they log.
 *
 * <p>It wants a login, which is set; the system properties that a test sets are its own.
 */
public abstract class BrokerFixture {
    static final String CONTEXT_FACTORY = "org.apache.activemq.jndi.ActiveMQInitialContextFactory";
    static final ActiveMQQueue QUEUE = new ActiveMQQueue("q");
    static final ActiveMQTopic TOPIC = new ActiveMQTopic("t");

    // Held here, because a logger that nobody holds is collected together with its filter.
    private static final Logger LOGGER = Logger.getLogger("kel.jms");
    private static final List<String> LOG = new CopyOnWriteArrayList<>();
    static final AtomicReference<Error> unloggable = new AtomicReference<>();   // thrown by the next sentence

    final List<JmsConnector> connectors = new ArrayList<>();
    private final Properties before = (Properties) System.getProperties().clone();
    private int port;
    BrokerService broker;

    @Before
    public void start() throws Exception {
        LOGGER.setFilter(BrokerFixture::record);
        LOG.clear();
        login("reader", "secret");
        startBroker();
    }

    @After
    public void stop() throws Exception {
        connectors.forEach(JmsConnector::disconnect);
        broker.stop();
        System.setProperties(before);
    }

    /** Starts the broker, after a stop at the same port. */
    void startBroker() throws Exception {
        broker = new BrokerService();
        broker.setPersistent(false);
        broker.setUseJmx(false);
        broker.setBrokerName("tests");
        var reader = new AuthenticationUser("reader", "secret", "");
        broker.setPlugins(new BrokerPlugin[] {new SimpleAuthenticationPlugin(List.of(reader))});
        port = broker.addConnector("tcp://127.0.0.1:" + port).getConnectUri().getPort();
        broker.start();
    }

    static void login(String user, String password) {
        System.setProperty("java.naming.security.principal", user);
        System.setProperty("java.naming.security.credentials", password);
    }

    private static boolean record(LogRecord entry) {
        LOG.add(entry.getMessage());
        Error error = unloggable.getAndSet(null);
        if (error != null) throw error;
        return false;
    }

    /** What was logged since the last look. */
    static String takeLog() {
        String lines = String.join("\n", LOG);
        LOG.clear();
        return lines;
    }

    /** What failed left one sentence in the log, with the reason. */
    static void checkFails(String reason, boolean result) {
        String log = takeLog();
        assertTrue(reason + ": " + log, !result && log.contains(reason) && !log.contains("\n"));
    }

    static boolean logged(String text) { return LOG.stream().anyMatch(line -> line.contains(text)); }

    /** The client trusts every class, so that only the connector and the JVM's filter stand guard. */
    String url() { return "tcp://127.0.0.1:" + port + "?jms.trustAllPackages=true"; }

    /** Ends every connection on the broker's side, as a broken network does. */
    void cut() throws Exception {
        for (var connection : broker.getTransportConnectors().get(0).getConnections()) connection.stop();
    }

    long waiting(ActiveMQDestination destination) {
        var found = broker.getRegionBroker().getDestinationMap().get(destination);
        return found == null ? 0 : found.getDestinationStatistics().getMessages().getCount();
    }

    int connections() { return broker.getTransportConnectors().get(0).getConnections().size(); }

    /** A connector to the queue "q", or for a client ID to a durable subscription of the topic "t". */
    JmsConnector connector(String url, String clientId) {
        boolean durable = !clientId.isEmpty();
        String[] columns = {"Symbol", "Shares", "two words", "or", "JMSType"};
        JmsConnector made = new JmsConnector("ConnectionFactory", durable ? "TOPIC" : "QUEUE", durable ? "t" : "q", durable, new int[5],
                columns, new String[] {null, "Count"}, CONTEXT_FACTORY, url, clientId, "subscription");
        connectors.add(made);
        return made;
    }

    /** The same, connected for receiving. */
    JmsConnector receiver(String clientId) {
        JmsConnector made = connector(url(), clientId);
        if (!made.connectForInput(true)) throw new AssertionError(takeLog());
        return made;
    }

    void send(Destination destination, Link.MessageMaker... makers) throws JMSException {
        Connection connection = connection();
        Session session = connection.createSession(false, Session.AUTO_ACKNOWLEDGE);
        for (Link.MessageMaker maker : makers) session.createProducer(destination).send(maker.make(session));
        connection.close();
    }

    Connection connection() throws JMSException { return new ActiveMQConnectionFactory("reader", "secret", url()).createConnection(); }

    /** Sends the numbers from first to last as texts. */
    void sendNumbers(Destination destination, int first, int last) throws JMSException {
        var makers = new Link.MessageMaker[last - first + 1];
        Arrays.setAll(makers, i -> session -> session.createTextMessage("" + (first + i)));
        send(destination, makers);
    }

    static List<Integer> numbers(int first, int last) { return IntStream.rangeClosed(first, last).boxed().toList(); }

    /** The next numbers; fewer when none comes for five seconds. */
    static List<Integer> receive(JmsConnector connector, int count) {
        List<Integer> found = new ArrayList<>();
        long end = System.nanoTime() + 5_000_000_000L;
        while (found.size() < count && System.nanoTime() < end) {
            String text = connector.receiveTextMessage();
            if (text == null) throw new AssertionError("refused after " + found + ": " + takeLog());
            if (!text.isEmpty()) found.add(Integer.valueOf(text));
        }
        return found;
    }

    static void waitUntil(String what, BooleanSupplier condition) throws InterruptedException {
        for (int i = 0; i < 500 && !condition.getAsBoolean(); ++i) Thread.sleep(10);
        if (!condition.getAsBoolean()) throw new AssertionError("not within five seconds: " + what + LOG);
    }

    /** Runs beside the test; what goes wrong there is up to the test to notice. */
    static Thread later(int micros, ThrowingRunnable action) {
        Thread thread = new Thread(() -> {
            LockSupport.parkNanos(micros * 1_000L);
            try {
                action.run();
            } catch (Throwable e) {
                LOG.add("beside the test: " + e);
            }
        });
        thread.start();
        return thread;
    }
}
