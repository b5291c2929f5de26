package com.morvex.kel.connectors;

import java.util.List;
import java.util.Set;
import java.util.concurrent.ConcurrentHashMap;
import java.util.function.Predicate;

/**
 * The connectors of this process that receive, and are not disconnected. One that was forgotten without a
 * disconnect would keep a client ID, or messages that its provider has sent ahead, from its successor.
 */
final class OpenConnectors {
    private static final Set<ConnectionKeeper> RECEIVING = ConcurrentHashMap.newKeySet();

    private OpenConnectors() {}

    static void add(ConnectionKeeper keeper) { RECEIVING.add(keeper); }

    static void remove(ConnectionKeeper keeper) { RECEIVING.remove(keeper); }

    static boolean any(Predicate<ConnectionKeeper> predicate) { return RECEIVING.stream().anyMatch(predicate); }

    /**
     * Disconnects the predecessors of a connector: those for the same source that were made on the same thread
     * and that nobody has any more.
     */
    static void closeForgotten(ConnectionKeeper successor) {
        List<ConnectionKeeper> earlier = RECEIVING.stream().filter(successor::mayFollow).toList();
        if (earlier.isEmpty()) return;
        System.gc();   // only the collector knows
        for (ConnectionKeeper one : earlier) {
            if (one.isForgotten()) one.disconnect();
        }
    }

    /** Who holds the successor's client ID in this process; null when nobody does. */
    static ConnectionKeeper holderFor(ConnectionKeeper successor) {
        return RECEIVING.stream().filter(successor::wantsClientIdOf).findFirst().orElse(null);
    }
}
