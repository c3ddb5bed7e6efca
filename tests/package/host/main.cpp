// The smallest host: it is built out of an installed tree.
#include <tavlo/TavloPresentEngine.h>
#include <tavlo/TavloPresentUtil.h>

#include <QCoreApplication>

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    TavloPresentEngine engine;
    engine.start(nullptr, TavloPresentThreadModeThread);
    engine.stop();
    return TavloPresentUtil::transitionKinds().size() == 105 ? 0 : 1;
}
