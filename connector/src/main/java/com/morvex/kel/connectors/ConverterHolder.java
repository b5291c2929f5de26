package com.morvex.kel.connectors;

import javax.jms.Message;
import javax.jms.Session;

/** A user's converter, with whatever it does wrong turned into a {@link ConnectorException}. */
final class ConverterHolder {
    /** Stream name and opcode stand before a row's fields. */
    static final int PREFIX_LENGTH = 2;

    private final String className;
    private final MessageConverter converter;
    private boolean hasWarned;

    private ConverterHolder(String className, MessageConverter converter) {
        this.className = className;
        this.converter = converter;
    }

    static ConverterHolder load(String className, String parameter) {
        String name = "The converter class \"" + className + "\" (parameter converterClassName) ";
        MessageConverter converter;
        try {
            Class<?> found = Class.forName(className);
            converter = found.asSubclass(MessageConverter.class).getConstructor().newInstance();
        } catch (ClassNotFoundException e) {
            throw new ConnectorException(name + "was not found on the class path.", e);
        } catch (ClassCastException e) {
            throw new ConnectorException(name + "must implement " + MessageConverter.class.getName() + ".", e);
        } catch (NoSuchMethodException | IllegalAccessException | InstantiationException e) {
            throw new ConnectorException(
                    name + "must be public, not abstract, with a public constructor without arguments.", e);
        } catch (Throwable e) {
            Throwable own = e.getCause() == null ? e : e.getCause();
            throw new ConnectorException(name + "could not be made: " + Log.reason(own) + ".", e);
        }
        ConverterHolder holder = new ConverterHolder(className, converter);
        try {
            converter.init(parameter);
        } catch (Throwable e) {
            String refused = "%srefused \"%s\" (parameter converterParam): %s.";
            throw new ConnectorException(refused.formatted(name, parameter, Log.reason(e)), e);
        } finally {
            holder.clearInterruption();
        }
        return holder;
    }

    String[] toRow(Message message) {
        String[] row;
        try {
            row = converter.toRow(message);
        } catch (Throwable e) {
            throw failed("toRow", e);
        } finally {
            clearInterruption();
        }
        if (row == null) throw new ConnectorException("the converter " + className + " made no row of it");
        MessageReader.checkFields(row, PREFIX_LENGTH);
        return row;
    }

    Message toMessage(String[] row, Session session) {
        Message message;
        try {
            message = converter.toMessage(row, session);
        } catch (Throwable e) {
            throw failed("toMessage", e);
        } finally {
            clearInterruption();
        }
        if (message == null) throw new ConnectorException("The converter " + className + " made no message.");
        return message;
    }

    /** What a converter leaves set would end every receive from then on. */
    private void clearInterruption() {
        if (!Thread.interrupted() || hasWarned) return;
        hasWarned = true;
        Log.warn("The converter " + className + " leaves its thread interrupted, which is cleared each time.");
    }

    private ConnectorException failed(String operation, Throwable e) {
        return new ConnectorException("%s.%s failed: %s".formatted(className, operation, Log.reason(e)), e);
    }
}
