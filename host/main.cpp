// tavlo: the reference host. It loads the engine as any host does, through include/ alone.

#include "Console.h"
#include "commands/Commands.h"

#include <QGuiApplication>

#include <algorithm>
#include <array>

namespace {

struct Command
{
    const char* name;
    const char* help;
    int (*run)(const QStringList& arguments);
};

constexpr std::array commands{
    Command{"switch", "CLIP...       switch between files, addresses and devices; record and stream it",
            &tavlo::host::switchCommand},
    Command{"run", "SHOW.xml         put on a show file (docs/show-file.md)", &tavlo::host::runCommand},
    Command{"check", "FILE...        tell what is wrong in show files, or in records", &tavlo::host::checkCommand},
    Command{"probe", "FILE|URL       tell what an input is", &tavlo::host::probeCommand},
    Command{"devices", "             list graphics adapters, cameras and sound devices", &tavlo::host::devicesCommand},
    Command{"effects", "             list the transitions", &tavlo::host::effectsCommand},
    Command{"filters", "             list the picture filters", &tavlo::host::filtersCommand},
    Command{"records", "             list the records that have an XML form", &tavlo::host::recordsCommand},
    Command{"version", "             tell the versions, and where pictures are drawn", &tavlo::host::versionCommand},
    Command{"pace", "[FPS [SECONDS]] run the frame thread and measure it", &tavlo::host::paceCommand},
};

int usage()
{
    tavlo::host::err() << "usage: tavlo COMMAND ...\n";
    for (const Command& command : commands)
        tavlo::host::err() << "  " << command.name << ' ' << command.help << '\n';
    tavlo::host::err() << "Lists take --json. TAVLO_LOG=1 shows what the engine logs." << Qt::endl;
    return tavlo::host::WrongUse;
}

void dropMessage(QtMsgType, const QMessageLogContext&, const QString&) {}

} // namespace

int main(int argc, char** argv)
{
    const bool onScreen =
        std::any_of(argv, argv + argc, [](const char* text) { return qstrcmp(text, "--window") == 0; });
    if (!onScreen)
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (!qEnvironmentVariableIsSet("TAVLO_LOG"))
        qInstallMessageHandler(dropMessage);
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const auto* const command = std::ranges::find_if(commands, [&arguments](const Command& candidate) {
        return arguments.value(1) == QLatin1String(candidate.name);
    });
    return command != commands.end() ? command->run(arguments.mid(2)) : usage();
}
