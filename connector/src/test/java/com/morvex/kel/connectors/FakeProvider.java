package com.morvex.kel.connectors;

import java.lang.reflect.Proxy;
import java.util.*;
import java.util.concurrent.CopyOnWriteArrayList;
import java.util.concurrent.CountDownLatch;
import java.util.function.Supplier;
import javax.jms.*;
import javax.naming.Context;
import javax.naming.spi.InitialContextFactory;

/** A provider whose calls are written down; one of them blocks, deaf to interruption, and one fails. */
public final class FakeProvider implements InitialContextFactory {
    static final String CREATE = "ConnectionFactory.createConnection";
    static final String CLOSE = "Connection.close";
    static final List<String> CALLS = new CopyOnWriteArrayList<>();
    static volatile String blocked;
    static volatile CountDownLatch until;
    static volatile String failing;
    static volatile Supplier<Throwable> failure;
    static volatile ExceptionListener listener;
    static volatile String login;
    static volatile String session;

    static JmsConnector connector(String blockedCall) {
        CALLS.clear();
        failing = "";
        failure = () -> new JMSException(failing);
        until = new CountDownLatch(1);
        blocked = blockedCall;
        return new JmsConnector("Factory", "QUEUE", "Queue", false, null, null, null, FakeProvider.class.getName(), "fake://", "", "");
    }

    static void waitForCalls(String call, int count) throws InterruptedException {
        BrokerFixture.waitUntil(count + " " + call, () -> Collections.frequency(CALLS, call) == count);
    }

    @Override
    public Context getInitialContext(Hashtable<?, ?> environment) {
        return (Context) proxy(Context.class);
    }

    private static Object proxy(Class<?> type) {
        return Proxy.newProxyInstance(type.getClassLoader(), new Class<?>[] {type}, (self, method, arguments) -> {
            String call = type.getSimpleName() + "." + method.getName();
            CALLS.add(call);
            while (call.equals(blocked) && until.getCount() > 0) Thread.onSpinWait();
            if (call.equals(failing)) throw failure.get();
            if (call.endsWith("setExceptionListener")) listener = (ExceptionListener) arguments[0];
            if (call.equals("Context.lookup"))
                return proxy(arguments[0].equals("Factory") ? ConnectionFactory.class : javax.jms.Queue.class);
            // As jndi.properties has them, which the naming context adds to what it was given.
            if (call.equals("Context.getEnvironment"))
                return new Hashtable<>(Map.of(Context.SECURITY_PRINCIPAL, "user", Context.SECURITY_CREDENTIALS, "password"));
            if (call.endsWith(".createSession")) session = Arrays.toString(arguments);
            if (call.equals(CREATE)) login = Arrays.toString(arguments);
            if (call.equals("MessageConsumer.receive")) return proxy(TextMessage.class);
            if (call.endsWith(".getJMSMessageID")) return "ID:\u001b[2J\u202e";   // as a sender may make it
            Class<?> result = method.getReturnType();
            if (result == boolean.class) return call.equals("Session.getTransacted");
            boolean nothing = call.equals("MessageConsumer.receiveNoWait");
            return result.isInterface() && !nothing ? proxy(result) : null;
        });
    }
}
