// Records the programme until it is killed, and tells after each picture how many are committed.

#include "OutputSupport.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char** argv)
{
    using namespace tavlo::test;
    const QCoreApplication application(argc, argv);
    Stage stage(Stage::Way::Pictures);
    tagTavloPresentOutputParam param = Stage::param(QString::fromLocal8Bit(argv[1]));
    param.recordMode = QByteArray(argv[2]).toUInt();
    stage.start(TavloPresentOutputTypeRecord, param);
    for (int number = 0;; ++number) {
        stage.commit(number, 1);
        std::printf("%d\n", number);
        std::fflush(stdout);
    }
}
