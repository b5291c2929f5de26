package com.morvex.kel.connectors;

import java.util.*;
import java.util.concurrent.CopyOnWriteArrayList;
import java.util.concurrent.locks.LockSupport;
import java.util.function.BooleanSupplier;
import java.util.function.Supplier;
import java.util.logging.Logger;
import java.util.stream.IntStream;
import javax.jms.*;
import org.apache.activemq.ActiveMQConnectionFactory;
import org.apache.activemq.broker.BrokerPlugin;
import org.apache.activemq.broker.BrokerService;
import org.apache.activemq.broker.region.DestinationStatistics;
import org.apache.activemq.command.ActiveMQQueue;
import org.apache.activemq.command.ActiveMQTopic;

/** A broker of the tests' own process on a free port, connectors to it, and what they log. */
final class TestBroker implements AutoCloseable {
    static final String CONTEXT_FACTORY = "org.apache.activemq.jndi.ActiveMQInitialContextFactory";
    static final ActiveMQQueue QUEUE = new ActiveMQQueue("q");
    static final ActiveMQTopic TOPIC = new ActiveMQTopic("t");

    // Held here, because a logger that nobody holds is collected together with its filter.
    private static final Logger LOGGER = Logger.getLogger("kel.jms");
    private static final List<String> LOG = new CopyOnWriteArrayList<>();

    private final List<JmsConnector> connectors = new ArrayList<>();
    private final BrokerPlugin[] plugins;
    private BrokerService service;
    private int port;

    TestBroker(BrokerPlugin... plugins) throws Exception {
        this.plugins = plugins;
        LOGGER.setFilter(entry -> !LOG.add(entry.getMessage()));
        LOG.clear();
        start();
    }

    void start() throws Exception {
        service = new BrokerService();
        service.setPersistent(false);
        service.setUseJmx(false);
        service.setBrokerName("tests");
        service.setPlugins(plugins);
        port = service.addConnector("tcp://127.0.0.1:" + port).getConnectUri().getPort();
        service.start();
    }

    void stop() throws Exception {
        service.stop();
        service.waitUntilStopped();
    }

    @Override
    public void close() throws Exception {
        connectors.forEach(JmsConnector::disconnect);
        stop();
    }

    /** What was logged since the last look. */
    static String takeLog() {
        String lines = String.join("\n", LOG);
        LOG.clear();
        return lines;
    }

    static boolean logged(String text) { return LOG.stream().anyMatch(line -> line.contains(text)); }

    String url() { return "tcp://127.0.0.1:" + port; }

    /** Ends every connection on the broker's side, as a broken network does. */
    void cut() throws Exception {
        for (var connection : service.getTransportConnectors().get(0).getConnections()) connection.stop();
    }

    int connections() { return service.getTransportConnectors().get(0).getConnections().size(); }

    DestinationStatistics counts() {
        return service.getRegionBroker().getDestinationMap().get(QUEUE).getDestinationStatistics();
    }

    /** A connector to the queue "q", or for a client ID to a durable subscription of the topic "t". */
    JmsConnector connector(String url, String clientId) {
        boolean durable = !clientId.isEmpty();
        JmsConnector made =
                new JmsConnector("ConnectionFactory", durable ? "TOPIC" : "QUEUE", durable ? "t" : "q",
                        durable, new int[5], new String[] {"Symbol", "Shares", "two words", "or", "JMSType"},
                        new String[] {null, "Count"}, CONTEXT_FACTORY, url, clientId, "subscription");
        connectors.add(made);
        return made;
    }

    /** The same, connected for receiving. */
    JmsConnector receiver(String clientId) {
        JmsConnector made = connector(url(), clientId);
        if (!made.connectForInput(true)) throw new AssertionError(takeLog());
        return made;
    }

    /** Leaves the connectors to the garbage collector. */
    void forgetConnectors() { connectors.clear(); }

    /** Makes one message. */
    interface Maker {
        Message make(Session session) throws JMSException;
    }

    void send(Destination destination, Maker... makers) throws JMSException {
        Connection connection = connection();
        Session session = connection.createSession(false, Session.AUTO_ACKNOWLEDGE);
        for (Maker maker : makers) session.createProducer(destination).send(maker.make(session));
        connection.close();
    }

    Connection connection() throws JMSException {
        return new ActiveMQConnectionFactory("reader", "secret", url()).createConnection();
    }

    /** Sends the numbers from first to last as texts. */
    void sendNumbers(Destination destination, int first, int last) throws JMSException {
        Maker[] makers = new Maker[last - first + 1];
        Arrays.setAll(makers, i -> session -> session.createTextMessage("" + (first + i)));
        send(destination, makers);
    }

    static List<Integer> numbers(int first, int last) {
        return IntStream.rangeClosed(first, last).boxed().toList();
    }

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

    /** What a test does beside its own thread. */
    interface Action {
        void run() throws Exception;
    }

    static Thread later(int micros, Action action) {
        Thread thread = new Thread(() -> {
            try {
                LockSupport.parkNanos(micros * 1_000L);
                action.run();
            } catch (Exception e) {
                throw new AssertionError(e);
            }
        });
        thread.start();
        return thread;
    }

    /** A connector made while one of its limits is set. */
    static JmsConnector limited(String limit, String value, Supplier<JmsConnector> maker) {
        System.setProperty("kel.jms." + limit, value);
        try {
            return maker.get();
        } finally {
            System.clearProperty("kel.jms." + limit);
        }
    }
}
