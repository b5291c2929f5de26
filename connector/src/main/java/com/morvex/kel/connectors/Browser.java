package com.morvex.kel.connectors;

import java.util.ArrayList;
import java.util.Enumeration;
import java.util.List;
import javax.jms.InvalidSelectorException;
import javax.jms.JMSException;
import javax.jms.Message;
import javax.jms.MessageConsumer;
import javax.jms.Queue;
import javax.jms.QueueBrowser;
import javax.jms.Session;

/**
 * Looks at messages without taking any off: at those that wait in a queue; for a topic, which keeps none, at
 * those that arrive within {@code kel.jms.browseMillis}. A session of its own leaves the link's undisturbed.
 */
final class Browser {
    private final Tuning tuning;
    private final Settling settling;

    Browser(Tuning tuning, Settling settling) {
        this.tuning = tuning;
        this.settling = settling;
    }

    /** At most {@code kel.jms.browseLimit} messages, in the destination's order. */
    List<Message> messages(Link link) throws JMSException {
        try {
            List<Message> found = look(link);
            if (!link.hasEnded()) return found;   // else a provider may end the look as if there were no more
        } catch (InvalidSelectorException e) {
            throw new ConnectorException("the " + settling.faultOfSelector(e), e);
        } catch (JMSException | RuntimeException e) {
            if (!link.hasEnded()) throw e;
            Log.detail("A look was cut short.", e);
        }
        throw new ConnectorException("the connection ended meanwhile");
    }

    private List<Message> look(Link link) throws JMSException {
        Session session = link.connection().createSession(false, Session.AUTO_ACKNOWLEDGE);
        try {
            return link.destination() instanceof Queue queue ? waiting(link, session, queue) : arriving(link, session);
        } finally {
            session.close();   // with its browser or subscriber
        }
    }

    private List<Message> waiting(Link link, Session session, Queue queue) throws JMSException {
        List<Message> found = new ArrayList<>();
        QueueBrowser browser = session.createBrowser(queue, settling.selector());
        link.closeWithIt(browser);
        try {
            Enumeration<?> messages = browser.getEnumeration();
            while (!link.hasEnded() && found.size() < tuning.browseLimit() && messages.hasMoreElements()) {
                if (messages.nextElement() instanceof Message message) found.add(message);
            }
        } finally {
            link.closeWithIt(null);
            browser.close();
        }
        return found;
    }

    private List<Message> arriving(Link link, Session session) throws JMSException {
        List<Message> found = new ArrayList<>();
        MessageConsumer subscriber = session.createConsumer(link.destination(), settling.selector());
        long end = System.nanoTime() + tuning.browseMillis() * 1_000_000;
        long left = tuning.browseMillis();
        while (left > 0 && !link.hasEnded() && found.size() < tuning.browseLimit()) {
            Message message = subscriber.receive(left);
            if (message != null) found.add(message);
            left = (end - System.nanoTime()) / 1_000_000;
        }
        return found;
    }
}
