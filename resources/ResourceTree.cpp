#include "resources/ResourceTree.h"

#include <QtCore/qglobal.h>

// The macro declares a function, which must not land in a namespace.
static void registerTree() { Q_INIT_RESOURCE(tavlo); }

namespace tavlo {

// The tree's object file registers the tree by itself, but a linker takes it out of a static library only when called
// for.
void initResourceTree() { registerTree(); }

} // namespace tavlo
