package com.morvex.kel.connectors;

import java.lang.reflect.Method;
import javax.jms.Connection;

/**
 * Whether a connection that looks open has lost its broker. Some clients connect again by themselves and tell
 * nobody; JMS has no question for that, but a client whose connection has a {@code getTransport} that knows
 * {@code isConnected}, as ActiveMQ's, can be asked.
 */
final class HiddenLoss {
    private HiddenLoss() {}

    /** False also where the provider does not say. */
    static boolean of(Connection connection) {
        try {
            Object transport = connection.getClass().getMethod("getTransport").invoke(connection);
            Method question = questionOf(transport.getClass());
            return question != null && Boolean.FALSE.equals(question.invoke(transport));
        } catch (ReflectiveOperationException | RuntimeException e) {
            return false;
        }
    }

    /** The method as a public interface has it: the class that answers need not be public. */
    private static Method questionOf(Class<?> type) {
        for (Class<?> one = type; one != null; one = one.getSuperclass()) {
            for (Class<?> face : one.getInterfaces()) {
                for (Method method : face.getMethods()) {
                    if (method.getName().equals("isConnected") && method.getParameterCount() == 0) return method;
                }
            }
        }
        return null;
    }
}
