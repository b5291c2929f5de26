package com.morvex.kel.connectors;

import java.util.ArrayList;
import java.util.List;
import java.util.function.BooleanSupplier;
import javax.jms.Connection;
import javax.jms.Destination;
import javax.jms.JMSException;
import javax.jms.Message;
import javax.jms.Session;
import org.apache.activemq.ActiveMQConnectionFactory;
import org.apache.activemq.broker.BrokerPlugin;
import org.apache.activemq.broker.BrokerService;
import org.apache.activemq.broker.TransportConnector;
import org.apache.activemq.broker.region.DestinationStatistics;
import org.apache.activemq.command.ActiveMQQueue;
import org.apache.activemq.command.ActiveMQTopic;

/** A broker of the tests' own process on a free port, and connectors to it. */
final class TestBroker implements AutoCloseable {
    static final String CONTEXT_FACTORY = "org.apache.activemq.jndi.ActiveMQInitialContextFactory";

    /** Makes the messages that a test sends. */
    interface Maker {
        Message make(Session session) throws JMSException;
    }

    private final List<JmsConnector> connectors = new ArrayList<>();
    private final BrokerPlugin[] plugins;
    private BrokerService service;
    private int port;

    TestBroker(BrokerPlugin... plugins) throws Exception {
        this.plugins = plugins;
        start();
    }

    void start() throws Exception {
        service = new BrokerService();
        service.setPersistent(false);
        service.setUseJmx(false);
        service.setUseShutdownHook(false);
        service.setBrokerName("tests");
        service.setPlugins(plugins);
        TransportConnector transport = service.addConnector("tcp://127.0.0.1:" + port);
        service.start();
        port = transport.getConnectUri().getPort();
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

    /** Leaves the connectors to the garbage collector. */
    void forgetConnectors() { connectors.clear(); }

    String url() { return "tcp://127.0.0.1:" + port; }

    /** Ends every connection on the broker's side, as a broken network does. */
    void cut() throws Exception {
        for (var connection : service.getTransportConnectors().get(0).getConnections()) connection.stop();
    }

    /** What the broker counts for a queue. */
    DestinationStatistics counts(String queue) {
        try {
            return service.getDestination(queueNamed(queue)).getDestinationStatistics();
        } catch (Exception e) {
            throw new AssertionError(e);
        }
    }

    int connections() { return service.getTransportConnectors().get(0).getConnections().size(); }

    JmsConnector queue(String name) { return connector(url(), "QUEUE", name, false, "", ""); }

    JmsConnector topic(String name) { return connector(url(), "TOPIC", name, false, "", ""); }

    JmsConnector durable(String topic, String clientId) {
        return connector(url(), "TOPIC", topic, true, clientId, "subscription");
    }

    JmsConnector connector(
            String url, String type, String name, boolean durable, String clientId, String subscription) {
        JmsConnector made = new JmsConnector("ConnectionFactory", type, name, durable, new int[2],
                new String[] {"Symbol", "Shares"}, new String[2], CONTEXT_FACTORY, url, clientId,
                subscription);
        connectors.add(made);
        return made;
    }

    /** A connector that receives from a queue. */
    JmsConnector receiver(String queue) {
        JmsConnector made = queue(queue);
        if (!made.connectForInput(true)) throw new AssertionError("not connected: " + LogCapture.lines());
        return made;
    }

    Connection connect() throws JMSException { return connect(null, null); }

    Connection connect(String user, String password) throws JMSException {
        return new ActiveMQConnectionFactory(url()).createConnection(user, password);
    }

    void send(Destination destination, Maker... makers) throws JMSException {
        Connection connection = connect();
        try {
            Session session = connection.createSession(false, Session.AUTO_ACKNOWLEDGE);
            var producer = session.createProducer(destination);
            for (Maker maker : makers) producer.send(maker.make(session));
        } finally {
            connection.close();
        }
    }

    /** Sends the numbers from first to last as texts. */
    void sendNumbers(Destination destination, int first, int last) throws JMSException {
        Maker[] makers = new Maker[last - first + 1];
        for (int i = 0; i < makers.length; ++i) {
            String text = Integer.toString(first + i);
            makers[i] = session -> session.createTextMessage(text);
        }
        send(destination, makers);
    }

    static ActiveMQQueue queueNamed(String name) { return new ActiveMQQueue(name); }

    static ActiveMQTopic topicNamed(String name) { return new ActiveMQTopic(name); }

    /** The next texts; fails when one is refused or none comes for five seconds. */
    static List<Integer> numbers(JmsConnector connector, int count) {
        List<Integer> found = new ArrayList<>();
        long end = System.nanoTime() + 5_000_000_000L;
        while (found.size() < count && System.nanoTime() < end) {
            String text = connector.receiveTextMessage();
            if (text == null) throw new AssertionError("refused after " + found + ": " + LogCapture.lines());
            if (!text.isEmpty()) found.add(Integer.valueOf(text));
        }
        return found;
    }

    static void waitUntil(String what, BooleanSupplier condition) throws InterruptedException {
        for (int i = 0; i < 500 && !condition.getAsBoolean(); ++i) Thread.sleep(10);
        if (!condition.getAsBoolean()) throw new AssertionError("not within five seconds: " + what);
    }
}
