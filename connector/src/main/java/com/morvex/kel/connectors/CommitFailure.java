package com.morvex.kel.connectors;

/**
 * A commit that failed, of which the log has told. The bridge has the JVM print every exception that it finds,
 * which would tell it again and look like a crash; of this kind alone the JVM prints nothing.
 */
@SuppressWarnings({"serial", "removal"})
public final class CommitFailure extends ThreadDeath {
    CommitFailure() {}
}
