package com.morvex.kel.connectors;

import java.util.concurrent.ConcurrentHashMap;
import java.util.concurrent.ConcurrentMap;

/**
 * Which connection of this process holds which client ID. A broker admits a client ID once, so a connector
 * that was forgotten without a disconnect would keep its successor out.
 */
final class ClientIds {
    private static final ConcurrentMap<String, ConnectionKeeper> HOLDERS = new ConcurrentHashMap<>();

    private ClientIds() {}

    /** Makes the keeper the holder; closes the connection of the one before it. */
    static void take(ConnectionSettings settings, ConnectionKeeper keeper) {
        ConnectionKeeper earlier = HOLDERS.put(key(settings), keeper);
        if (earlier == null || earlier == keeper) return;
        Log.warn("The connection with the client ID \"" + settings.clientId()
                + "\" is closed, because another connector of this process connects with it.");
        earlier.displace();
    }

    static void release(ConnectionSettings settings, ConnectionKeeper keeper) {
        HOLDERS.remove(key(settings), keeper);
    }

    private static String key(ConnectionSettings settings) {
        return settings.jndiUrl() + " " + settings.clientId();
    }
}
