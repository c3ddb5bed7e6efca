// Reads arbitrary bytes as an effect file and as a compiled effect; the first byte chooses.
//
// Whatever the bytes hold: nothing crashes, what is refused says why, and what is taken holds together.

#include "effects/CompiledForm.h"
#include "effects/DriverMessages.h"
#include "effects/EffectSource.h"

#include <cstdlib>

using namespace tavlo::effects;

namespace {

void check(bool holds)
{
    if (!holds)
        std::abort();
}

void readSource(std::string_view text)
{
    std::string error;
    const auto source = parseEffect(text, "fuzz.fx", error);
    if (!source) {
        check(error.starts_with("fuzz.fx:"));
        return;
    }
    check(faultOf(source->description).empty() && source->variableLines.size() == source->description.variables.size());
    for (const ShaderSection& section : source->fragmentShaders)
        check(source->shaderText(section).ends_with(section.text));
    CompiledForm form{"fuzz", source->description, {}};
    form.binaries.resize(form.description.programs.size());
    check(readCompiled(writeCompiled(form)) == form);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::span rest(data + 1, size - 1);
    const std::string_view text(reinterpret_cast<const char*>(rest.data()), rest.size());
    if (data[0] % 4 == 0) {
        if (const auto form = readCompiled(std::as_bytes(rest)))
            check(faultOf(form->description).empty());
    } else if (data[0] % 4 == 1) {
        nameLines(text, "fuzz.fx");
    } else {
        readSource(text);
    }
    return 0;
}
