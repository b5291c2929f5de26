package com.morvex.kel.connectors;

/**
 * A commit that failed, of which the log has told. The bridge has the JVM print every exception that it finds,
 * which would tell it again and look like a crash; of this kind alone the JVM prints nothing.
 */
@SuppressWarnings({"serial", "removal"})
public final class CommitFailure extends ThreadDeath {
    CommitFailure() {}

    /** Whether a commit that was under way took place, nobody knows, so the messages only may come again. */
    static void tell(ConnectionKeeper keeper, Link link, Throwable e) {
        if (keeper.isDisconnected()) {
            Log.warn("A stop interrupted the commit; " + Link.count(link.pending()) + " may come again.", e);
        } else {
            // The session's state is anybody's guess now; a new one begins after the last good commit.
            keeper.lost(link, new ConnectorException("the commit failed: " + Log.rootReason(e), e));
        }
    }
}
