// tavlo: the reference host. It loads the engine as any host does, through include/ alone.

#include "Console.h"
#include "commands/Commands.h"

#include <QGuiApplication>

#include <algorithm>
#include <array>
#include <xcb/xcb.h>

namespace {

struct Command
{
    const char* name;
    const char* help;
    int (*run)(const QStringList& arguments);
    const char* usage = nullptr; ///< of a command with arguments of its own
};

constexpr std::array commands{
    Command{"switch", "CLIP...       switch between files, addresses and devices; record and stream it",
            &tavlo::host::switchCommand, tavlo::host::switchUsage},
    Command{"run", "SHOW.xml         put on a show file (docs/show-file.md)", &tavlo::host::runCommand,
            tavlo::host::runUsage},
    Command{"check", "FILE...        tell what is wrong in show files, or in records", &tavlo::host::checkCommand,
            tavlo::host::checkUsage},
    Command{"probe", "FILE|URL       tell what an input is", &tavlo::host::probeCommand, tavlo::host::probeUsage},
    Command{"devices", "             list graphics adapters, cameras and sound devices", &tavlo::host::devicesCommand},
    Command{"effects", "             list the transitions", &tavlo::host::effectsCommand},
    Command{"filters", "             list the picture filters", &tavlo::host::filtersCommand},
    Command{"records", "             list the records that have an XML form", &tavlo::host::recordsCommand},
    Command{"version", "             tell the versions, and where pictures are drawn", &tavlo::host::versionCommand},
    Command{"pace", "[FPS [SECONDS]] run the frame thread and measure it", &tavlo::host::paceCommand,
            tavlo::host::paceUsage},
};

void tellUsage(QTextStream& stream)
{
    stream << "usage: tavlo COMMAND ...\n";
    for (const Command& command : commands)
        stream << "  " << command.name << ' ' << command.help << '\n';
    stream << "Lists take --json, commands --help. TAVLO_LOG=1 shows what the engine logs." << Qt::endl;
}

void tellUsage(const Command& command, QTextStream& stream)
{
    if (command.usage)
        stream << command.usage << Qt::endl;
    else
        stream << "usage: tavlo " << command.name << " [--json]" << Qt::endl;
}

/// What ends the program is told whether or not the log is.
void dropMessage(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (type == QtFatalMsg)
        tavlo::host::err() << text << Qt::endl;
}

bool hasWord(int argc, char** argv, const char* word)
{
    return std::any_of(argv, argv + argc, [word](const char* text) { return qstrcmp(text, word) == 0; });
}

/// Chooses how Qt shows windows, before it begins. The engine draws on X11, on Wayland through its bridge.
/// \return false, with a word to the person, when there is no display to show one on
bool choosePlatform(bool onScreen)
{
    if (!onScreen) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        return true;
    }
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "xcb");
    if (!qgetenv("QT_QPA_PLATFORM").startsWith("xcb"))
        return true;                                                 // the person's own choice
    xcb_connection_t* const display = xcb_connect(nullptr, nullptr); // never null
    const bool answers = xcb_connection_has_error(display) == 0;
    xcb_disconnect(display);
    if (!answers)
        tavlo::host::err() << "--window: the display \"" << qEnvironmentVariable("DISPLAY") << "\" does not answer"
                           << Qt::endl;
    return answers;
}

} // namespace

int main(int argc, char** argv)
{
    if (!choosePlatform(hasWord(argc, argv, "--window") && !hasWord(argc, argv, "--help")))
        return tavlo::host::CouldNotStart;
    if (!qEnvironmentVariableIsSet("TAVLO_LOG"))
        qInstallMessageHandler(dropMessage);
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QString name = arguments.value(1);
    const auto* const command =
        std::ranges::find_if(commands, [&](const Command& row) { return name == QLatin1String(row.name); });
    if (command == commands.end()) {
        const bool asked = name == QLatin1String("help") || name == QLatin1String("--help");
        tellUsage(asked ? tavlo::host::out() : tavlo::host::err());
        return asked ? tavlo::host::Done : tavlo::host::WrongUse;
    }
    if (arguments.contains(QLatin1String("--help"))) {
        tellUsage(*command, tavlo::host::out());
        return tavlo::host::Done;
    }
    const QStringList given = arguments.mid(2);
    if (!command->usage && !given.isEmpty() && given != QStringList{QStringLiteral("--json")}) {
        tellUsage(*command, tavlo::host::err());
        return tavlo::host::WrongUse;
    }
    return command->run(given);
}
