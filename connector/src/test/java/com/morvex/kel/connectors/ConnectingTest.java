package com.morvex.kel.connectors;

import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;
import static org.junit.Assert.assertThrows;
import static org.junit.Assert.assertTrue;

import java.net.InetAddress;
import java.net.ServerSocket;
import java.net.URL;
import java.net.URLClassLoader;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.concurrent.CountDownLatch;
import javax.jms.Connection;
import javax.jms.JMSException;
import org.apache.activemq.broker.BrokerPlugin;
import org.apache.activemq.security.AuthenticationUser;
import org.apache.activemq.security.SimpleAuthenticationPlugin;
import org.junit.AfterClass;
import org.junit.Before;
import org.junit.BeforeClass;
import org.junit.Test;

/** How connecting fails, with what sentence and how soon. */
public class ConnectingTest {
    private static TestBroker broker;

    @BeforeClass
    public static void start() throws Exception {
        broker = new TestBroker(new BrokerPlugin[] {
                new SimpleAuthenticationPlugin(List.of(new AuthenticationUser("reader", "secret", "")))});
        login("reader", "secret");
    }

    @AfterClass
    public static void stop() throws Exception {
        System.clearProperty("java.naming.security.principal");
        System.clearProperty("java.naming.security.credentials");
        broker.close();
    }

    @Before
    public void clearLog() {
        LogCapture.clear();
    }

    private static void login(String user, String password) {
        System.setProperty("java.naming.security.principal", user);
        System.setProperty("java.naming.security.credentials", password);
    }

    private static JmsConnector connector(
            String factory, String type, String name, String contextFactory, String url) {
        return new JmsConnector(factory, type, name, false, null, null, null, contextFactory, url, "", "");
    }

    private static void checkFails(String reason, JmsConnector connector) {
        assertFalse(reason, connector.connectForInput(true));
        assertTrue(LogCapture.lines(),
                LogCapture.lines().contains(reason) && !LogCapture.lines().contains("\n"));
        LogCapture.clear();
    }

    @Test
    public void everyFailureIsOneSentence() {
        String factory = TestBroker.CONTEXT_FACTORY;
        String url = broker.url();
        checkFails("\"com.example.Missing\" (parameter jndiContextFactory) must be a JNDI context factory",
                connector("ConnectionFactory", "QUEUE", "q", "com.example.Missing", url));
        checkFails("The parameter connectionFactory is empty", connector("", "QUEUE", "q", factory, url));
        checkFails("The parameter destinationName is empty",
                connector("ConnectionFactory", "QUEUE", "", factory, url));
        checkFails("\"connectionFactory\" (parameter connectionFactory) is not bound",
                connector("connectionFactory", "QUEUE", "q", factory, url));
        checkFails("must be bound to a javax.jms.ConnectionFactory",
                connector("dynamicQueues/q", "QUEUE", "q", factory, url));
        checkFails("\"dynamicTopics/t\" (parameter destinationName) is bound to a org.apache.activemq.command"
                        + ".ActiveMQTopic, but must be bound to a javax.jms.Queue",
                connector("ConnectionFactory", "QUEUE", "dynamicTopics/t", factory, url));
        checkFails("at \"tcp://127.0.0.1:1\" (parameter jndiURL) is not reachable",
                connector("ConnectionFactory", "QUEUE", "q", factory, "tcp://127.0.0.1:1"));
        checkFails("is not reachable: Could not create Transport",
                connector("ConnectionFactory", "QUEUE", "q", factory, "nonsense://x"));
        checkFails("A durable subscription needs a topic",
                broker.connector(url, "QUEUE", "q", true, "id", "subscription"));
        JmsConnector connected = broker.receiver("dynamicQueues/q");
        checkFails("is connected already", connected);
        connected.disconnect();
        checkFails("was disconnected", connected);
    }

    @Test
    public void aLoginComesFromSystemPropertiesOrJndiProperties() throws Exception {
        login("reader", "wrong");
        checkFails("refuses the login of \"reader\"", broker.queue("q"));
        System.clearProperty("java.naming.security.principal");
        System.clearProperty("java.naming.security.credentials");
        checkFails("refuses a connection without a login", broker.queue("q"));

        Path folder = Files.createTempDirectory("kel-jndi");
        Path file = Files.writeString(folder.resolve("jndi.properties"),
                "java.naming.security.principal=reader\njava.naming.security.credentials=secret\n");
        Thread thread = Thread.currentThread();
        ClassLoader before = thread.getContextClassLoader();
        try (URLClassLoader loader = new URLClassLoader(new URL[] {folder.toUri().toURL()}, before)) {
            thread.setContextClassLoader(loader);
            assertTrue(LogCapture.lines(), broker.queue("q").connectForInput(false));
        } finally {
            thread.setContextClassLoader(before);
            login("reader", "secret");
            Files.delete(file);
            Files.delete(folder);
        }
    }

    @Test
    public void aSilentProviderIsGivenUpInTime() throws Exception {
        System.setProperty("kel.jms.connectTimeoutMillis", "300");
        try (ServerSocket silent = new ServerSocket(0, 5, InetAddress.getLoopbackAddress())) {
            String url = "tcp://127.0.0.1:" + silent.getLocalPort();
            JmsConnector connector =
                    connector("ConnectionFactory", "QUEUE", "q", TestBroker.CONTEXT_FACTORY, url);
            long start = System.nanoTime();
            checkFails("did not connect within 300 ms", connector);
            assertTrue(System.nanoTime() - start < 1_500_000_000L);
            System.setProperty("kel.jms.connectTimeoutMillis", "20000");
            JmsConnector patient =
                    connector("ConnectionFactory", "QUEUE", "q", TestBroker.CONTEXT_FACTORY, url);
            Thread stopper = new Thread(() -> {
                try {
                    silent.accept();   // of the first connector
                    silent.accept();
                } catch (java.io.IOException e) {
                    throw new java.io.UncheckedIOException(e);
                }
                patient.disconnect();
            });
            stopper.start();
            checkFails("Connecting was cancelled", patient);
            stopper.join();
            assertTrue(System.nanoTime() - start < 3_000_000_000L);
        } finally {
            System.clearProperty("kel.jms.connectTimeoutMillis");
        }
    }

    @Test
    public void aConnectionThatAppearsLateIsClosed() throws Exception {
        System.setProperty("kel.jms.connectTimeoutMillis", "100");
        JmsConnector connector = FakeProvider.connector();
        System.clearProperty("kel.jms.connectTimeoutMillis");
        CountDownLatch start = FakeProvider.block("Connection.start");
        checkFails("within 100 ms", connector);
        TestBroker.waitUntil(
                "closed while starting", () -> FakeProvider.callsTo("Connection.close").size() == 1);
        start.countDown();
        TestBroker.waitUntil(
                "closed when started", () -> FakeProvider.callsTo("Connection.close").size() == 2);
    }

    @Test
    public void aLostConnectionIsClosedBeforeTheNextIsMade() throws Exception {
        String create = "ConnectionFactory.createConnection";
        String close = "Connection.close";
        JmsConnector connector = FakeProvider.connector();
        assertTrue(connector.connectForInput(true));
        FakeProvider.listener.onException(new JMSException("gone"));
        TestBroker.waitUntil("connected again", () -> FakeProvider.callsTo(create).size() == 2);
        assertEquals(List.of(create, close, create), FakeProvider.callsTo(create, close));
        assertTrue(connector.disconnect());
    }

    @Test
    public void aLossThatOnlyAFailedCallTellsOfIsNoticed() throws Exception {
        String create = "ConnectionFactory.createConnection";
        JmsConnector connector = FakeProvider.connector();
        assertTrue(connector.connectForInput(true));
        FakeProvider.FAILING.add("MessageConsumer.receiveNoWait");
        assertEquals("", connector.receiveTextMessage());
        FakeProvider.FAILING.clear();
        TestBroker.waitUntil("connected again", () -> FakeProvider.callsTo(create).size() == 2);
        assertEquals("", connector.receiveTextMessage());
        FakeProvider.FAILING.add("Session.commit");
        assertThrows(ConnectorException.class, connector::commitTransaction);
        TestBroker.waitUntil("connected once more", () -> FakeProvider.callsTo(create).size() == 3);
        assertTrue(connector.disconnect());
    }

    @Test
    public void aProviderThatHoldsUpACallDoesNotHoldUpAStop() throws Exception {
        JmsConnector connector = FakeProvider.connector();
        assertTrue(connector.connectForInput(true));
        CountDownLatch take = FakeProvider.block("MessageConsumer.receiveNoWait");
        Thread reader = new Thread(connector::receiveTextMessage);
        reader.start();
        TestBroker.waitUntil("reading", () -> FakeProvider.CALLS.contains("MessageConsumer.receiveNoWait"));
        long start = System.nanoTime();
        assertFalse(connector.disconnect());
        assertTrue(System.nanoTime() - start < 2_000_000_000L);
        assertTrue(LogCapture.lines(), LogCapture.lines().contains("does not return from a call"));
        assertEquals(List.of("Connection.close"), FakeProvider.callsTo("Connection.close"));
        take.countDown();
        reader.join();
    }

    @Test
    public void aClientIdInUseIsWaitedForBriefly() throws Exception {
        Connection other = broker.connect("reader", "secret");
        other.setClientID("taken");
        other.start();
        checkFails("The client ID \"taken\" (parameter clientID) must be free", broker.durable("t", "taken"));
        Thread leaving = new Thread(() -> {
            try {
                Thread.sleep(300);
                other.close();
            } catch (Exception e) {
                throw new AssertionError(e);
            }
        });
        leaving.start();
        assertTrue(LogCapture.lines(), broker.durable("t", "taken").connectForInput(true));
        leaving.join();
        LogCapture.clear();
        assertTrue("browsing needs no client ID", broker.durable("t", "taken").connectForInput(false));
        assertEquals("and leaves its holder alone", "", LogCapture.lines());
    }

    @Test
    public void anUnusableLimitIsNamed() {
        System.setProperty("kel.jms.browseLimit", "0");
        try {
            ConnectorException e = assertThrows(ConnectorException.class, () -> broker.queue("q"));
            assertEquals("The system property kel.jms.browseLimit is \"0\", but must be an integer from 1 to"
                            + " 2147483647.",
                    e.getMessage());
        } finally {
            System.clearProperty("kel.jms.browseLimit");
        }
    }
}
