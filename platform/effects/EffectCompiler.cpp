#include "effects/EffectCompiler.h"

#include "effects/CompiledForm.h"
#include "effects/DriverMessages.h"
#include "effects/EffectSource.h"
#include "graphics/Log.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <unistd.h>

namespace tavlo::effects {

namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t largestCacheFile = std::uintmax_t{64} << 20;

std::vector<std::byte> readFile(const fs::path& path)
{
    std::error_code error;
    const std::uintmax_t size = fs::file_size(path, error);
    if (error || size == 0 || size > largestCacheFile)
        return {};
    std::vector<std::byte> bytes(static_cast<std::size_t>(size));
    std::ifstream file(path, std::ios::binary);
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return file ? bytes : std::vector<std::byte>{};
}

// Creates the file whole or not at all; one that exists stays as it is.
void writeNewFile(const fs::path& path, const std::vector<std::byte>& bytes)
{
    std::error_code error;
    if (fs::exists(path, error))
        return;
    fs::path temporary = path;
    temporary += ".new" + std::to_string(getpid());
    std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (file) {
        fs::create_hard_link(temporary, path, error); // unlike a rename, replaces nothing
        if (error && error != std::errc::file_exists)
            graphics::logFailure("failed to write the effect cache: " + error.message());
    } else {
        graphics::logFailure("failed to write the effect cache " + temporary.string());
    }
    fs::remove(temporary, error);
}

EffectPtr loadCompiled(graphics::Device& device, const std::string& name, const fs::path& cacheFile)
{
    std::optional<CompiledForm> form = readCompiled(readFile(cacheFile));
    if (!form || form->driver != device.driverIdentity())
        return nullptr;
    std::vector<graphics::ProgramPtr> programs;
    for (const std::vector<std::byte>& binary : form->binaries) {
        programs.push_back(device.createProgramFromBinary(binary));
        if (!programs.back())
            return nullptr;
    }
    return Effect::create(name, std::move(form->description), std::move(programs));
}

const ShaderSection& sectionOf(const std::vector<ShaderSection>& shaders, const std::string& name)
{
    return *std::ranges::find(shaders, name, &ShaderSection::name); // the parser has seen to it that it stands there
}

// The programs of a source; fewer than it has when one is wrong, and why in `errors`.
std::vector<graphics::ProgramPtr> compile(graphics::Device& device, const EffectSource& source, const std::string& name,
                                          std::string& errors)
{
    std::vector<graphics::ProgramPtr> programs;
    for (const ProgramDescription& pair : source.description.programs) {
        std::string messages;
        graphics::ProgramPtr program =
            device.createProgram(source.shaderText(sectionOf(source.vertexShaders, pair.vertex)),
                                 source.shaderText(sectionOf(source.fragmentShaders, pair.fragment)), messages);
        if (!program) {
            errors = nameLines(messages, name);
            if (errors.empty())
                errors = name + ": the driver refuses " + pair.vertex + " with " + pair.fragment;
            return programs;
        }
        programs.push_back(std::move(program));
    }
    return programs;
}

void writeCompiledFile(const graphics::Device& device, const EffectDescription& description,
                       const std::vector<graphics::ProgramPtr>& programs, const fs::path& cacheFile)
{
    CompiledForm form{device.driverIdentity(), description, {}};
    for (const graphics::ProgramPtr& program : programs) {
        form.binaries.push_back(program->binary());
        if (form.binaries.back().empty())
            return; // a driver that gives none: there is nothing to keep
    }
    writeNewFile(cacheFile, writeCompiled(form));
}

} // namespace

Result D3DX11CompileEffectFromMemory(graphics::Device& device, const CompileJob& job, EffectPtr& effect,
                                     std::string& errors)
{
    const std::string name = job.sourceName.empty() ? "D3DX11Effect" : job.sourceName;
    errors.clear();
    effect = job.cacheFile.empty() ? nullptr : loadCompiled(device, name, job.cacheFile);
    if (effect)
        return resultOk;

    const std::optional<EffectSource> source = parseEffect(job.source, name, errors);
    if (!source)
        return resultFail;
    const std::vector<graphics::ProgramPtr> programs = compile(device, *source, name, errors);
    if (programs.size() != source->description.programs.size())
        return resultFail;
    effect = Effect::create(name, source->description, programs);
    if (!effect) {
        errors = name + ": a shader declares a uniform that is no variable of the effect";
        return resultFail;
    }
    if (!job.cacheFile.empty())
        writeCompiledFile(device, source->description, programs, job.cacheFile);
    return resultOk;
}

} // namespace tavlo::effects
