#include "effects/EffectSource.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <utility>

namespace tavlo::effects {

using namespace graphics;

namespace {

template <class Value>
using Names = std::pair<std::string_view, Value>;

constexpr Names<UniformType> typeNames[] = {
    {"float", UniformType::Float}, {"vec2", UniformType::Vec2}, {"vec3", UniformType::Vec3},
    {"vec4", UniformType::Vec4},   {"int", UniformType::Int},   {"texture", UniformType::Texture},
};

constexpr Names<BlendFactor> factorNames[] = {
    {"zero", BlendFactor::Zero},          {"one", BlendFactor::One},
    {"src_color", BlendFactor::SrcColor}, {"inv_src_color", BlendFactor::InvSrcColor},
    {"src_alpha", BlendFactor::SrcAlpha}, {"inv_src_alpha", BlendFactor::InvSrcAlpha},
    {"dst_color", BlendFactor::DstColor}, {"inv_dst_color", BlendFactor::InvDstColor},
    {"dst_alpha", BlendFactor::DstAlpha}, {"inv_dst_alpha", BlendFactor::InvDstAlpha},
};

constexpr Names<BlendOp> opNames[] = {
    {"add", BlendOp::Add}, {"subtract", BlendOp::Subtract}, {"rev_subtract", BlendOp::RevSubtract},
    {"min", BlendOp::Min}, {"max", BlendOp::Max},
};

template <class Value, std::size_t count>
std::optional<Value> valueOf(const Names<Value> (&names)[count], std::string_view name)
{
    for (const auto& [known, value] : names) {
        if (known == name)
            return value;
    }
    return std::nullopt;
}

std::string_view typeName(UniformType type)
{
    for (const auto& [name, value] : typeNames) {
        if (value == type)
            return name;
    }
    return {};
}

template <class Number>
std::optional<Number> numberOf(std::string_view text)
{
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

/// What is wrong with a line; caught in `parseEffect`, nothing leaves it.
struct LineFault
{
    std::string text;
};

[[noreturn]] void refuse(std::string text) { throw LineFault{std::move(text)}; }

std::string quoted(std::string_view text)
{
    // Not every byte of a broken file belongs in a log.
    std::string clean(text.substr(0, 40));
    std::ranges::replace_if(
        clean, [](unsigned char c) { return c < 0x20 || c >= 0x7f; }, '?');
    return "'" + clean + "'";
}

class Parser
{
public:
    explicit Parser(std::string_view text) : _rest(text) {}

    EffectSource parse();
    int line() const { return _line; }

private:
    enum class Section : std::uint8_t
    {
        Front,
        Variables,
        Technique,
        Glsl
    };

    struct PassLines
    {
        bool color = false, alpha = false, write = false, depth = false;
    };

    bool nextLine();
    void splitWords();
    void beginSection();
    void beginGlsl(std::vector<ShaderSection>& shaders, const std::string& name);
    void readFront();
    void readVariable();
    void readValues(VariableDescription& variable, std::size_t firstWord);
    void readSampler(VariableDescription& variable);
    void readTechniqueLine();
    void beginPass();
    void readBlend();
    void readWrite();
    void readDepth();
    void checkPrograms();

    std::string_view word(std::size_t index) const { return index < _words.size() ? _words[index] : ""; }
    PassDescription& pass() { return _source.description.techniques.back().passes.back(); }
    void once(bool& seen);

    std::string_view _rest, _text;
    int _line = 0;
    std::vector<std::string_view> _words;

    Section _section = Section::Front;
    bool _versionSeen = false, _variablesSeen = false, _commonSeen = false;
    PassLines _passLines;
    ShaderSection* _glsl = nullptr; ///< the section that GLSL lines go to
    std::vector<int> _programLines; ///< as the description's programs
    EffectSource _source;
};

EffectSource Parser::parse()
{
    while (nextLine()) {
        if (_text.starts_with('[')) {
            splitWords();
            beginSection();
        } else if (_section == Section::Glsl) {
            _glsl->text.append(_text).push_back('\n');
        } else {
            splitWords();
            if (_words.empty())
                continue;
            if (_section == Section::Front)
                readFront();
            else if (_section == Section::Variables)
                readVariable();
            else
                readTechniqueLine();
        }
    }
    if (!_versionSeen)
        refuse("no 'effect' line");
    checkPrograms();
    if (std::string fault = faultOf(_source.description); !fault.empty())
        refuse(std::move(fault));
    return std::move(_source);
}

bool Parser::nextLine()
{
    if (_rest.empty())
        return false;
    const std::size_t end = std::min(_rest.find('\n'), _rest.size());
    _text = _rest.substr(0, end);
    _rest.remove_prefix(std::min(end + 1, _rest.size()));
    if (_text.ends_with('\r'))
        _text.remove_suffix(1);
    ++_line;
    return true;
}

void Parser::splitWords()
{
    constexpr std::string_view blanks = " \t";
    std::string_view left = _text.substr(0, _text.find("//"));
    _words.clear();
    for (;;) {
        left.remove_prefix(std::min(left.find_first_not_of(blanks), left.size()));
        if (left.empty())
            return;
        const std::size_t end = std::min(left.find_first_of(blanks), left.size());
        _words.push_back(left.substr(0, end));
        left.remove_prefix(end);
    }
}

void Parser::readFront()
{
    if (_versionSeen)
        refuse("outside of any section: " + quoted(word(0)));
    if (_words.size() != 2 || word(0) != "effect")
        refuse("the file has to begin with 'effect 1'");
    if (word(1) != "1")
        refuse("no known version of effect files: " + quoted(word(1)));
    _versionSeen = true;
}

void Parser::beginSection()
{
    if (!_versionSeen)
        refuse("the file has to begin with 'effect 1'");
    std::string_view kind = word(0), name = word(1);
    const std::string_view last = _words.back();
    if (!last.ends_with(']') || _words.size() > 2)
        refuse("a section is '[kind]' or '[kind name]'");
    (_words.size() == 2 ? name : kind).remove_suffix(1);
    kind.remove_prefix(1);

    const bool named = kind == "technique" || kind == "vertex" || kind == "fragment";
    if (named ? !isEffectName(name) : _words.size() == 2)
        refuse(named ? "no name for a section: " + quoted(name) : "no name belongs to " + quoted(kind));
    if (kind == "variables") {
        once(_variablesSeen);
        _section = Section::Variables;
    } else if (kind == "technique") {
        _source.description.techniques.push_back({std::string(name), {}});
        _section = Section::Technique;
    } else if (kind == "common") {
        once(_commonSeen);
        _source.common.line = _line + 1;
        _glsl = &_source.common;
        _section = Section::Glsl;
    } else if (kind == "vertex") {
        beginGlsl(_source.vertexShaders, std::string(name));
    } else if (kind == "fragment") {
        beginGlsl(_source.fragmentShaders, std::string(name));
    } else {
        refuse("no section of effect files: " + quoted(kind));
    }
}

void Parser::once(bool& seen)
{
    if (std::exchange(seen, true))
        refuse("stands twice: " + quoted(_text));
}

void Parser::beginGlsl(std::vector<ShaderSection>& shaders, const std::string& name)
{
    if (std::ranges::find(shaders, name, &ShaderSection::name) != shaders.end())
        refuse("a shader of that name stands above: " + quoted(name));
    shaders.push_back({name, {}, _line + 1});
    _glsl = &shaders.back();
    _section = Section::Glsl;
}

void Parser::readVariable()
{
    VariableDescription variable;
    const auto type = valueOf(typeNames, word(0));
    if (!type)
        refuse("no type for a variable: " + quoted(word(0)));
    variable.type = *type;
    std::string_view name = word(1);
    if (const std::size_t bracket = name.find('['); bracket != std::string_view::npos) {
        const auto count = name.ends_with(']')
                               ? numberOf<std::uint32_t>(name.substr(bracket + 1, name.size() - bracket - 2))
                               : std::nullopt;
        if (!count || *count < 1 || *count > maxArray)
            refuse("an array has 1 to " + std::to_string(maxArray) + " elements: " + quoted(name));
        variable.count = *count;
        variable.isArray = true;
        name = name.substr(0, bracket);
    }
    variable.name = name;
    if (!isEffectName(name))
        refuse("no name for a variable: " + quoted(name));
    if (std::ranges::find(_source.description.variables, name, &VariableDescription::name) !=
        _source.description.variables.end())
        refuse("a variable of that name stands above: " + quoted(name));
    if (_source.description.variables.size() >= maxVariables)
        refuse("more than " + std::to_string(maxVariables) + " variables");
    if (variable.type == UniformType::Texture)
        readSampler(variable);
    else if (_words.size() > 2)
        readValues(variable, 2);
    _source.description.variables.push_back(std::move(variable));
    _source.variableLines.push_back(_line);
}

void Parser::readSampler(VariableDescription& variable)
{
    bool nearest = false, wrap = false;
    for (std::size_t i = 2; i < _words.size(); ++i) {
        if (word(i) == "nearest")
            nearest = true;
        else if (word(i) == "wrap")
            wrap = true;
        else if (word(i) != "linear" && word(i) != "clamp")
            refuse("no filter for a texture: " + quoted(word(i)));
    }
    if (nearest && wrap)
        refuse("no texture is filtered nearest and wraps");
    variable.sampler = nearest ? Sampler::NearestClamp : wrap ? Sampler::LinearWrap : Sampler::LinearClamp;
}

void Parser::readValues(VariableDescription& variable, std::size_t firstWord)
{
    if (variable.isArray || word(firstWord) != "=" || _words.size() - firstWord - 1 != componentsOf(variable.type))
        refuse("after the name: nothing, or '=' and " + std::to_string(componentsOf(variable.type)) + " values");
    for (std::size_t i = firstWord + 1; i < _words.size(); ++i) {
        if (variable.type == UniformType::Int) {
            const auto value = numberOf<std::int32_t>(word(i));
            if (!value)
                refuse("no whole number: " + quoted(word(i)));
            variable.initial.push_back(std::bit_cast<std::uint32_t>(*value));
        } else {
            const auto value = numberOf<float>(word(i));
            if (!value || !std::isfinite(*value))
                refuse("no number: " + quoted(word(i)));
            variable.initial.push_back(std::bit_cast<std::uint32_t>(*value));
        }
    }
}

void Parser::readTechniqueLine()
{
    if (word(0) == "pass")
        return beginPass();
    if (_source.description.techniques.back().passes.empty())
        refuse("a technique begins with a pass: " + quoted(word(0)));
    if (word(0) == "blend")
        readBlend();
    else if (word(0) == "write")
        readWrite();
    else if (word(0) == "depth")
        readDepth();
    else
        refuse("no line of a pass: " + quoted(word(0)));
}

void Parser::beginPass()
{
    if (_words.size() != 3)
        refuse("a pass is 'pass VERTEX FRAGMENT'");
    const ProgramDescription wanted{std::string(word(1)), std::string(word(2))};
    std::vector<ProgramDescription>& programs = _source.description.programs;
    const auto known = std::ranges::find(programs, wanted);
    PassDescription added;
    added.program = static_cast<std::uint32_t>(known - programs.begin());
    if (known == programs.end()) {
        programs.push_back(wanted);
        _programLines.push_back(_line);
    }
    _source.description.techniques.back().passes.push_back(added);
    _passLines = {};
}

void Parser::readBlend()
{
    const auto source = valueOf(factorNames, word(2)), target = valueOf(factorNames, word(3));
    const auto op = _words.size() > 4 ? valueOf(opNames, word(4)) : std::optional(BlendOp::Add);
    if (!source || !target || !op || _words.size() > 5)
        refuse("a blend is 'blend color|alpha SOURCE TARGET [OP]'");
    if (word(1) == "color") {
        once(_passLines.color);
        pass().blend.color = {*source, *target, *op};
    } else if (word(1) == "alpha") {
        once(_passLines.alpha);
        pass().blend.alpha = {*source, *target, *op};
    } else {
        refuse("blended are color and alpha, not " + quoted(word(1)));
    }
    pass().blend.enabled = true;
}

void Parser::readWrite()
{
    once(_passLines.write);
    std::uint8_t mask = 0;
    if (word(1) != "none") {
        for (const char channel : word(1)) {
            const std::size_t bit = std::string_view("rgba").find(channel);
            if (bit == std::string_view::npos)
                refuse("no channels: " + quoted(word(1)));
            mask = static_cast<std::uint8_t>(mask | (1U << bit));
        }
    }
    if (_words.size() != 2)
        refuse("written are letters of 'rgba', or 'none'");
    pass().blend.writeMask = mask;
}

void Parser::readDepth()
{
    once(_passLines.depth);
    DepthState depth;
    for (std::size_t i = 1; i < _words.size(); ++i) {
        if (word(i) == "test")
            depth.test = true;
        else if (word(i) == "write")
            depth.write = true;
        else if (word(i) != "off" || _words.size() != 2)
            refuse("no depth mode: " + quoted(word(i)));
    }
    if (_words.size() < 2)
        refuse("a depth mode is off, test, write, or test write");
    pass().depth = depth;
}

void Parser::checkPrograms()
{
    const auto stands = [](const std::vector<ShaderSection>& shaders, const std::string& name) {
        return std::ranges::find(shaders, name, &ShaderSection::name) != shaders.end();
    };
    for (std::size_t i = 0; i < _programLines.size(); ++i) {
        const ProgramDescription& program = _source.description.programs[i];
        const bool vertex = stands(_source.vertexShaders, program.vertex);
        if (vertex && stands(_source.fragmentShaders, program.fragment))
            continue;
        _line = _programLines[i];
        refuse(vertex ? "no fragment section " + quoted(program.fragment)
                      : "no vertex section " + quoted(program.vertex));
    }
}

} // namespace

std::optional<EffectSource> parseEffect(std::string_view text, const std::string& fileName, std::string& error)
{
    Parser parser(text);
    try {
        return parser.parse();
    } catch (const LineFault& fault) {
        error = fileName + ":" + std::to_string(std::max(parser.line(), 1)) + ": " + fault.text;
        return std::nullopt;
    }
}

std::string EffectSource::shaderText(const ShaderSection& section) const
{
    std::string text = "#version 300 es\nprecision highp float;\nprecision highp int;\nprecision highp sampler2D;\n";
    const auto at = [&text](int line) { text += "#line " + std::to_string(line) + "\n"; };
    for (std::size_t i = 0; i < description.variables.size(); ++i) {
        const VariableDescription& variable = description.variables[i];
        at(variableLines[i]);
        const std::string_view type = variable.type == UniformType::Texture ? "sampler2D" : typeName(variable.type);
        text.append("uniform ").append(type).append(" ").append(variable.name);
        text += variable.isArray ? "[" + std::to_string(variable.count) + "];\n" : ";\n";
    }
    if (!common.text.empty()) {
        at(common.line);
        text += common.text;
    }
    at(section.line);
    return text + section.text;
}

} // namespace tavlo::effects
