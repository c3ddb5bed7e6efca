// tavlo: the reference host. It loads the engine as any host does, through include/ alone.

#include "Commands.h"

#include <QCoreApplication>
#include <QTextStream>

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
    Command{"check", "RECORD FILE...   tell what is wrong in XML files that are to be read as that record",
            &tavlo::host::checkCommand},
    Command{"records", "                 list the records that have an XML form", &tavlo::host::recordsCommand},
    Command{"pace", "[FPS [SECONDS]]     run the frame thread and measure it", &tavlo::host::paceCommand},
};

int usage()
{
    QTextStream err(stderr);
    err << "usage: tavlo COMMAND ...\n";
    for (const Command& command : commands)
        err << "  " << command.name << ' ' << command.help << '\n';
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const auto* const command = std::ranges::find_if(commands, [&arguments](const Command& candidate) {
        return arguments.value(1) == QLatin1String(candidate.name);
    });
    return command != commands.end() ? command->run(arguments.mid(2)) : usage();
}
