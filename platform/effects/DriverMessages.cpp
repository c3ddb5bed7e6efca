#include "effects/DriverMessages.h"

#include <algorithm>

namespace tavlo::effects {

namespace {

/// Takes things off the front of a text, or leaves it as it is.
class Scanner
{
public:
    explicit Scanner(std::string_view text) : rest(text) {}

    bool take(std::string_view expected)
    {
        if (!rest.starts_with(expected))
            return false;
        rest.remove_prefix(expected.size());
        return true;
    }
    std::string_view takeDigits()
    {
        const std::size_t length = std::min(rest.find_first_not_of("0123456789"), rest.size());
        const std::string_view digits = rest.substr(0, length);
        rest.remove_prefix(length);
        return digits;
    }

    std::string_view rest;
};

std::string nameLine(std::string_view message, const std::string& fileName)
{
    Scanner scanner(message);
    const std::string_view severity = scanner.take("ERROR: ")     ? "error: "
                                      : scanner.take("WARNING: ") ? "warning: "
                                                                  : "";
    std::string_view line;
    if (!scanner.takeDigits().empty()) {
        if (scanner.take(":")) {
            line = scanner.takeDigits();
            if (scanner.take("("))
                scanner.takeDigits(), scanner.take(")");
        } else if (scanner.take("(")) {
            line = scanner.takeDigits();
            scanner.take(")");
        }
    }
    scanner.take(" ");
    if (line.empty() || !scanner.take(":"))
        return fileName + ": " + std::string(message);
    scanner.take(" ");
    return fileName + ":" + std::string(line) + ": " + std::string(severity) + std::string(scanner.rest);
}

} // namespace

std::string nameLines(std::string_view messages, const std::string& fileName)
{
    std::string named;
    while (!messages.empty()) {
        const std::size_t end = std::min(messages.find_first_of(std::string_view("\n\0", 2)), messages.size());
        const std::string_view line = messages.substr(0, end);
        messages.remove_prefix(std::min(end + 1, messages.size()));
        if (line.empty())
            continue;
        if (!named.empty())
            named += '\n';
        named += nameLine(line, fileName);
    }
    return named;
}

} // namespace tavlo::effects
