package com.morvex.kel.connectors;

import static com.morvex.kel.connectors.TestBroker.*;
import static org.junit.Assert.*;

import java.net.*;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import javax.jms.Connection;
import javax.jms.JMSException;
import org.apache.activemq.security.AuthenticationUser;
import org.apache.activemq.security.SimpleAuthenticationPlugin;
import org.junit.*;

/** How connecting fails, with what sentence and how soon; and what a provider may do to a connection. */
public class ConnectingTest {
    private TestBroker broker;

    @Before
    public void start() throws Exception {
        var reader = new AuthenticationUser("reader", "secret", "");
        broker = new TestBroker(new SimpleAuthenticationPlugin(List.of(reader)));
        login("reader", "secret");
    }

    @After
    public void stop() throws Exception {
        login(null, null);
        broker.close();
    }

    private static void login(String user, String password) {
        System.getProperties().remove("java.naming.security.principal");
        System.getProperties().remove("java.naming.security.credentials");
        if (user == null) return;
        System.setProperty("java.naming.security.principal", user);
        System.setProperty("java.naming.security.credentials", password);
    }

    private static void checkFails(String reason, JmsConnector connector) {
        assertFalse(reason, connector.connectForInput(true));
        String log = takeLog();
        assertTrue(log, log.contains(reason) && !log.contains("\n"));
    }

    @Test
    public void everyFailureIsOneSentence() throws Exception {
        String url = broker.url();
        String[][] rows = {
                // the sentence's core, connectionFactory, destinationName, jndiContextFactory, jndiURL
                {"(parameter jndiContextFactory) must be", "ConnectionFactory", "q", "com.example.No", url},
                {"parameter connectionFactory is empty", "", "q", CONTEXT_FACTORY, url},
                {"parameter destinationName is empty", "ConnectionFactory", "", CONTEXT_FACTORY, url},
                {"(parameter connectionFactory) is not bound", "wrong", "q", CONTEXT_FACTORY, url},
                {"to a javax.jms.ConnectionFactory", "dynamicQueues/q", "q", CONTEXT_FACTORY, url},
                {"to a javax.jms.Queue", "ConnectionFactory", "dynamicTopics/t", CONTEXT_FACTORY, url},
                {"is not reachable", "ConnectionFactory", "q", CONTEXT_FACTORY, "tcp://127.0.0.1:1"},
                {"is not reachable", "ConnectionFactory", "q", CONTEXT_FACTORY, "nonsense://x"},
                {"subscription needs a topic", "ConnectionFactory", "q", CONTEXT_FACTORY, url, "id"},
        };
        for (String[] row : rows) {
            boolean durable = row.length > 5;
            checkFails(row[0],
                    new JmsConnector(row[1], "QUEUE", row[2], durable, null, null, null, row[3], row[4], "id",
                            "subscription"));
        }
        JmsConnector connected = broker.receiver("");
        checkFails("is connected already", connected);
        connected.disconnect();
        checkFails("was disconnected", connected);
        var e = assertThrows(
                ConnectorException.class, () -> limited("browseLimit", "0", () -> broker.connector(url, "")));
        assertTrue(e.getMessage().contains(
                "kel.jms.browseLimit is \"0\", but must be an integer from 1 to 2147483647"));
    }

    @Test
    public void aLoginComesFromSystemPropertiesOrJndiProperties() throws Exception {
        login("reader", "wrong");
        checkFails("refuses the login of \"reader\"", broker.connector(broker.url(), ""));
        login(null, null);
        checkFails("refuses a connection without a login", broker.connector(broker.url(), ""));
        Path folder = Files.createTempDirectory("kel-jndi");
        Path file = Files.writeString(folder.resolve("jndi.properties"),
                "java.naming.security.principal=reader\njava.naming.security.credentials=secret\n");
        Thread thread = Thread.currentThread();
        ClassLoader before = thread.getContextClassLoader();
        try (URLClassLoader loader = new URLClassLoader(new URL[] {folder.toUri().toURL()}, before)) {
            thread.setContextClassLoader(loader);
            broker.receiver("");
        } finally {
            thread.setContextClassLoader(before);
            Files.delete(file);
            Files.delete(folder);
        }
    }

    @Test
    public void aSilentProviderIsGivenUpInTime() throws Exception {
        try (ServerSocket silent = new ServerSocket(0, 5, InetAddress.getLoopbackAddress())) {
            String url = "tcp://127.0.0.1:" + silent.getLocalPort();
            JmsConnector connector = limited("connectTimeoutMillis", "300", () -> broker.connector(url, ""));
            JmsConnector patient = limited("connectTimeoutMillis", "20000", () -> broker.connector(url, ""));
            long start = System.nanoTime();
            checkFails("did not connect within 300 ms", connector);
            silent.accept();
            Thread stopper = later(0, () -> {
                silent.accept();
                patient.disconnect();
            });
            checkFails("Connecting was cancelled", patient);
            stopper.join();
            assertTrue(System.nanoTime() - start < 3_000_000_000L);
        }
    }

    @Test
    public void aClientIdInUseIsWaitedForBriefly() throws Exception {
        Connection other = broker.connection();
        other.setClientID("id");
        other.start();
        checkFails("\"id\" (parameter clientID) must be free", broker.connector(broker.url(), "id"));
        Thread leaving = later(300_000, other::close);
        broker.receiver("id");
        leaving.join();
        takeLog();
        assertTrue(
                "browsing needs no client ID", broker.connector(broker.url(), "id").connectForInput(false));
        assertEquals("and leaves its holder alone", "", takeLog());
    }

    @Test
    public void aConnectionThatAppearsLateIsClosed() throws Exception {
        JmsConnector connector =
                limited("connectTimeoutMillis", "100", () -> FakeProvider.connector("Connection.start"));
        checkFails("within 100 ms", connector);
        FakeProvider.waitForCalls(FakeProvider.CLOSE, 1);
        FakeProvider.until.countDown();
        FakeProvider.waitForCalls(FakeProvider.CLOSE, 2);
    }

    @Test
    public void aLossIsNoticedHoweverItIsToldAndTheOldConnectionClosedFirst() throws Exception {
        JmsConnector connector = FakeProvider.connector("");
        assertTrue(connector.connectForInput(true));
        FakeProvider.listener.onException(new JMSException("gone"));
        waitUntil("connected again", () -> logged("is there again"));
        FakeProvider.failing = "MessageConsumer.receiveNoWait";
        assertEquals("", connector.receiveTextMessage());
        FakeProvider.failing = "Session.commit";
        FakeProvider.waitForCalls(FakeProvider.CREATE, 3);
        assertNull("a message without text", connector.receiveTextMessage());
        assertThrows(ConnectorException.class, connector::commitTransaction);
        FakeProvider.waitForCalls(FakeProvider.CREATE, 4);
        List<String> calls = new ArrayList<>(FakeProvider.CALLS);
        calls.retainAll(List.of(FakeProvider.CREATE, FakeProvider.CLOSE));
        String renewed = ", " + FakeProvider.CLOSE + ", " + FakeProvider.CREATE;
        assertEquals("[" + FakeProvider.CREATE + renewed.repeat(3) + "]", calls.toString());
        assertTrue(connector.disconnect());
    }

    @Test
    public void aProviderThatHoldsUpACallDoesNotHoldUpAStop() throws Exception {
        JmsConnector connector = FakeProvider.connector("MessageConsumer.receiveNoWait");
        assertTrue(connector.connectForInput(true));
        Thread reader = later(0, connector::receiveTextMessage);
        FakeProvider.waitForCalls("MessageConsumer.receiveNoWait", 1);
        long start = System.nanoTime();
        assertFalse(connector.disconnect());
        assertTrue(System.nanoTime() - start < 2_000_000_000L);
        assertTrue(logged("does not return from a call"));
        FakeProvider.waitForCalls(FakeProvider.CLOSE, 1);
        FakeProvider.until.countDown();
        reader.join();
    }
}
