#include "effects/CompiledForm.h"

#include <array>
#include <cstring>

namespace tavlo::effects {

namespace {

constexpr std::array<char, 4> mark{'T', 'V', 'F', 'X'};
constexpr std::uint32_t version = 1;

class Writer
{
public:
    void number(std::uint32_t& value)
    {
        for (int shift = 0; shift < 32; shift += 8)
            bytes.push_back(static_cast<std::byte>(value >> shift));
    }
    template <class List>
    void length(List& list, std::uint32_t)
    {
        auto size = static_cast<std::uint32_t>(list.size());
        number(size);
    }
    template <class List>
    void raw(List& list)
    {
        const auto view = std::as_bytes(std::span(list));
        bytes.insert(bytes.end(), view.begin(), view.end());
    }

    std::vector<std::byte> bytes;
};

/// Once something is missing it reads zeros, and `failed` stays.
class Reader
{
public:
    explicit Reader(std::span<const std::byte> bytes) : _left(bytes) {}

    void number(std::uint32_t& value)
    {
        value = 0;
        if (_left.size() < 4) {
            failed = true;
            return;
        }
        for (int i = 3; i >= 0; --i)
            value = (value << 8) | std::to_integer<std::uint32_t>(_left[static_cast<std::size_t>(i)]);
        _left = _left.subspan(4);
    }
    /// Each element takes at least `elementBytes`: no length leads to memory that the file cannot fill.
    template <class List>
    void length(List& list, std::uint32_t elementBytes)
    {
        std::uint32_t size = 0;
        number(size);
        if (size > _left.size() / elementBytes)
            failed = true;
        list.resize(failed ? 0 : size);
    }
    template <class List>
    void raw(List& list)
    {
        std::memcpy(list.data(), _left.data(), list.size());
        _left = _left.subspan(list.size());
    }
    bool atEnd() const { return _left.empty(); }

    bool failed = false;

private:
    std::span<const std::byte> _left;
};

// One description of the form, for writing and reading.

template <class Archive, class Bytes>
void blob(Archive& archive, Bytes& bytes)
{
    archive.length(bytes, 1);
    if (!bytes.empty())
        archive.raw(bytes);
}

template <class Archive, class Enum>
void small(Archive& archive, Enum& value)
{
    auto number = static_cast<std::uint32_t>(value);
    archive.number(number);
    value = static_cast<Enum>(number > 255 ? 255 : number); // 255 is no value of any of them
}

template <class Archive>
void flag(Archive& archive, bool& value)
{
    std::uint32_t number = value ? 1 : 0;
    archive.number(number);
    value = number != 0;
}

template <class Archive>
void fields(Archive& archive, VariableDescription& variable)
{
    blob(archive, variable.name);
    small(archive, variable.type);
    archive.number(variable.count);
    flag(archive, variable.isArray);
    small(archive, variable.sampler);
    archive.length(variable.initial, 4);
    for (std::uint32_t& component : variable.initial)
        archive.number(component);
}

template <class Archive>
void fields(Archive& archive, PassDescription& pass)
{
    archive.number(pass.program);
    flag(archive, pass.blend.enabled);
    for (graphics::BlendEquation* equation : {&pass.blend.color, &pass.blend.alpha}) {
        small(archive, equation->source);
        small(archive, equation->target);
        small(archive, equation->op);
    }
    small(archive, pass.blend.writeMask);
    flag(archive, pass.depth.test);
    flag(archive, pass.depth.write);
}

template <class Archive, class Element>
void list(Archive& archive, std::vector<Element>& elements, std::uint32_t elementBytes)
{
    archive.length(elements, elementBytes);
    for (Element& element : elements)
        fields(archive, element);
}

template <class Archive>
void fields(Archive& archive, TechniqueDescription& technique)
{
    blob(archive, technique.name);
    list(archive, technique.passes, 44);
}

template <class Archive>
void fields(Archive& archive, ProgramDescription& program)
{
    blob(archive, program.vertex);
    blob(archive, program.fragment);
}

template <class Archive>
void fields(Archive& archive, std::vector<std::byte>& binary)
{
    blob(archive, binary);
}

template <class Archive>
void fields(Archive& archive, CompiledForm& form)
{
    blob(archive, form.driver);
    list(archive, form.description.variables, 24);
    list(archive, form.description.techniques, 8);
    list(archive, form.description.programs, 8);
    list(archive, form.binaries, 4);
}

} // namespace

std::vector<std::byte> writeCompiled(const CompiledForm& form)
{
    Writer writer;
    writer.raw(mark);
    std::uint32_t number = version;
    writer.number(number);
    CompiledForm copy = form; // the description of the form serves reading too, so it takes what it could change
    fields(writer, copy);
    return std::move(writer.bytes);
}

std::optional<CompiledForm> readCompiled(std::span<const std::byte> bytes)
{
    if (bytes.size() < mark.size() || std::memcmp(bytes.data(), mark.data(), mark.size()) != 0)
        return std::nullopt;
    Reader reader(bytes.subspan(mark.size()));
    std::uint32_t number = 0;
    reader.number(number);
    if (number != version)
        return std::nullopt;
    CompiledForm form;
    fields(reader, form);
    if (reader.failed || !reader.atEnd() || form.binaries.size() != form.description.programs.size() ||
        !faultOf(form.description).empty())
        return std::nullopt;
    return form;
}

} // namespace tavlo::effects
