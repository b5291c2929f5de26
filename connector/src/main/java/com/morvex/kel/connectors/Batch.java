package com.morvex.kel.connectors;

import java.util.ArrayList;
import java.util.List;
import javax.jms.JMSException;
import javax.jms.Message;

/**
 * The messages of one connector that were taken and not settled yet, where a host settles them.
 *
 * <p>For each receive that did not answer "nothing waiting" it has one message, so that the host can tell by
 * counting which is which. All of them came over one link, and go with it. Used on the reader's thread alone.
 */
final class Batch {
    private static final class Taken {
        final Message message;   // null for a receive that failed before there was one
        String refusal;          // null for a message that was handed on
        String first;            // of several texts that were handed on

        Taken(Message message) { this.message = message; }
    }

    private final ConnectionKeeper keeper;
    private final Settling settling;
    private final MessageBody bodies;
    private final List<Taken> all = new ArrayList<>();
    private Link link;
    private long firstAt;

    Batch(ConnectionKeeper keeper, Settling settling, MessageBody bodies) {
        this.keeper = keeper;
        this.settling = settling;
        this.bodies = bodies;
    }

    int count() { return all.size(); }

    boolean isEmpty() { return all.isEmpty(); }

    /** Null, as outside of the batch, where there is no message. */
    Message message(int index) { return has(index) ? all.get(index).message : null; }

    /** Null when it cannot be had. */
    byte[] body(int index) { return bodies.bytes(message(index)); }

    String first(int index) { return has(index) ? all.get(index).first : null; }

    String refusal(int index) { return has(index) ? all.get(index).refusal : null; }

    /** @param oneByOne whether as little as possible should hang on one message */
    boolean mayGrow(boolean oneByOne) {
        if (all.isEmpty()) return true;
        if (all.size() >= (oneByOne ? 1 : settling.settleAfter())) return false;
        return System.nanoTime() - firstAt < settling.settleMillis() * 1_000_000;
    }

    /** While there are messages of a link that is lost, none is taken from the next one. */
    boolean mayTakeFrom(Link other) { return link == null || link == other; }

    /** @param from the link over which it came */
    void add(Link from, Message message) {
        if (all.isEmpty()) firstAt = System.nanoTime();
        all.add(new Taken(message));
        link = from;
    }

    /** The message added last could not be used; the sentence says why. */
    void refuse(String sentence) {
        if (!all.isEmpty()) all.get(all.size() - 1).refusal = SafeText.of(sentence);
    }

    /** The message added last was handed on as several texts, of which this is the first. */
    void beginsWith(String text) {
        if (!all.isEmpty()) all.get(all.size() - 1).first = text;
    }

    /** Makes them as many as receives were answered, whatever a receive ended with. */
    void align(int count) {
        while (all.size() > count) all.remove(all.size() - 1);
        while (all.size() < count) {
            all.add(new Taken(null));
            refuse("A receive failed before there was a message.");
        }
        if (all.isEmpty()) clear();
    }

    /** Whether none of them can be settled any more, because the link has ended. */
    boolean isLost() { return link != null && link.isLost(); }

    /** Acknowledges or commits all of them and is empty then; false when they may come again. */
    boolean settle() {
        Link from = link;
        boolean isOver = isLost();
        int count = clear();
        if (from == null || count == 0) return true;
        if (isOver) return false;   // which the loss has told
        keeper.enters();
        try {
            from.commit();
            return true;
        } catch (JMSException | RuntimeException | Error e) {
            CommitFailure.tell(keeper, from, e);
            return false;
        } finally {
            keeper.leaves();
        }
    }

    /** Has them come again and is empty then; false when they come over another connection. */
    boolean forget() {
        Link from = link;
        boolean isOver = isLost();
        int count = clear();
        if (from == null || count == 0) return true;
        if (isOver) return false;
        keeper.enters();
        try {
            from.rollBack();
            return true;
        } catch (JMSException | RuntimeException | Error e) {
            keeper.lost(from, new ConnectorException("the messages could not be given back: " + Log.rootReason(e), e));
            return false;
        } finally {
            keeper.leaves();
        }
    }

    private boolean has(int index) { return index >= 0 && index < all.size(); }

    private int clear() {
        int count = all.size();
        all.clear();
        if (link != null && link.isLost()) link.readerIsBack();   // nobody need wait for it any more
        link = null;
        return count;
    }
}
