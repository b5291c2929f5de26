package com.morvex.kel.connectors;

import java.lang.reflect.Proxy;
import java.util.Hashtable;
import java.util.List;
import java.util.Map;
import java.util.Set;
import java.util.concurrent.ConcurrentHashMap;
import java.util.concurrent.CopyOnWriteArrayList;
import java.util.concurrent.CountDownLatch;
import javax.jms.ConnectionFactory;
import javax.jms.ExceptionListener;
import javax.jms.JMSException;
import javax.jms.Queue;
import javax.naming.Context;
import javax.naming.InitialContext;
import javax.naming.NamingException;
import javax.naming.spi.InitialContextFactory;

/** A provider whose calls are written down, and block (deaf to interruption) or fail as a test likes. */
public final class FakeProvider implements InitialContextFactory {
    static final List<String> CALLS = new CopyOnWriteArrayList<>();
    static final Map<String, CountDownLatch> BLOCKED = new ConcurrentHashMap<>();
    static final Set<String> FAILING = ConcurrentHashMap.newKeySet();
    static volatile ExceptionListener listener;

    static JmsConnector connector() {
        CALLS.clear();
        BLOCKED.clear();
        FAILING.clear();
        return new JmsConnector("Factory", "QUEUE", "Queue", false, null, null, null,
                FakeProvider.class.getName(), "fake://", "", "");
    }

    static CountDownLatch block(String call) {
        CountDownLatch latch = new CountDownLatch(1);
        BLOCKED.put(call, latch);
        return latch;
    }

    static List<String> callsTo(String... wanted) {
        return CALLS.stream().filter(List.of(wanted)::contains).toList();
    }

    @Override
    public Context getInitialContext(Hashtable<?, ?> environment) throws NamingException {
        return new InitialContext(true) {
            @Override
            public Object lookup(String name) {
                return proxy(name.equals("Factory") ? ConnectionFactory.class : Queue.class);
            }

            @Override
            public Hashtable<?, ?> getEnvironment() {
                return environment;
            }
        };
    }

    private static Object proxy(Class<?> type) {
        return Proxy.newProxyInstance(
                type.getClassLoader(), new Class<?>[] {type}, (self, method, arguments) -> {
                    String call = type.getSimpleName() + "." + method.getName();
                    CALLS.add(call);
                    CountDownLatch latch = BLOCKED.get(call);
                    while (latch != null && latch.getCount() > 0) Thread.onSpinWait();
                    if (FAILING.contains(call)) throw new JMSException(call);
                    if (call.equals("Connection.setExceptionListener"))
                        listener = (ExceptionListener) arguments[0];
                    Class<?> result = method.getReturnType();
                    if (result == boolean.class) return call.equals("Session.getTransacted");
                    return result.isInterface() && !call.contains(".receive") ? proxy(result) : null;
                });
    }
}
