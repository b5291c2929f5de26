// The one adapter of this library. Here, so that the entry points know no adapter but the abstract one.
#include "adapter/EntryPoints.h"
#include "jmsin/JmsInAdapter.h"

void* createAdapter() { return static_cast<Adapter*>(new JmsInAdapter); }  // a handle is always an Adapter*
