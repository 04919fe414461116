#include <plor/Program.h>

#include <plor/Gl.h>

#include "GlContext.h"

#include <runa/rlog.h>

#include <glbinding/gl/gl.h>
#include <glm/glm.hpp>
#include <glm/gtc/type_ptr.hpp>

#include <fstream>
#include <sstream>

using namespace gl;

namespace plor {

namespace {

const char* kBuildLabel = "plor::Program::Build";

std::string& BuildDirectory()
{
    static std::string directory;
    return directory;
}

const char* StageName(ShaderStage stage)
{
    switch (stage) {
    case ShaderStage::Vertex:
        return "vertex";
    case ShaderStage::Fragment:
        return "fragment";
    case ShaderStage::Geometry:
        return "geometry";
    }
    return "unknown";
}

GLenum StageType(ShaderStage stage)
{
    switch (stage) {
    case ShaderStage::Vertex:
        return GL_VERTEX_SHADER;
    case ShaderStage::Fragment:
        return GL_FRAGMENT_SHADER;
    case ShaderStage::Geometry:
        return GL_GEOMETRY_SHADER;
    }
    return GL_VERTEX_SHADER;
}

bool ReadFile(const std::string& path, std::string& text)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return false;
    std::ostringstream contents;
    contents << file.rdbuf();
    text = contents.str();
    return !file.bad();
}

/// Puts the defines right after the #version line (which must stay first) and restores the
/// line numbering, so compiler messages still point at lines of the file.
std::string InjectDefines(const std::string& source,
                          const std::vector<std::pair<std::string, std::string>>& defines)
{
    if (defines.empty())
        return source;
    std::string block;
    for (const auto& [name, value] : defines)
        block += "#define " + name + " " + value + "\n";

    std::size_t lineStart = 0;
    int lineNumber = 1;
    while (lineStart < source.size()) {
        const std::size_t lineEnd = source.find('\n', lineStart);
        const std::size_t textStart = source.find_first_not_of(" \t\r", lineStart);
        if (textStart != std::string::npos && source.compare(textStart, 8, "#version") == 0 &&
            (lineEnd == std::string::npos || textStart < lineEnd)) {
            std::string result = source.substr(0, lineEnd == std::string::npos ? source.size() : lineEnd);
            result += "\n" + block + "#line " + std::to_string(lineNumber + 1) + "\n";
            if (lineEnd != std::string::npos)
                result += source.substr(lineEnd + 1);
            return result;
        }
        if (lineEnd == std::string::npos)
            break;
        lineStart = lineEnd + 1;
        ++lineNumber;
    }
    return block + "#line 1\n" + source;
}

std::string TrimLog(std::string log)
{
    const std::size_t end = log.find_last_not_of(std::string(" \t\r\n\0", 5));
    log.resize(end == std::string::npos ? 0 : end + 1);
    return log;
}

std::string ShaderLog(GLuint shader)
{
    GLint length = 0;
    glGetShaderiv(shader, GL_INFO_LOG_LENGTH, &length);
    if (length <= 1)
        return "(no compiler log)";
    std::string log(static_cast<std::size_t>(length), '\0');
    glGetShaderInfoLog(shader, length, nullptr, log.data());
    return TrimLog(log);
}

std::string ProgramLog(GLuint program)
{
    GLint length = 0;
    glGetProgramiv(program, GL_INFO_LOG_LENGTH, &length);
    if (length <= 1)
        return "(no linker log)";
    std::string log(static_cast<std::size_t>(length), '\0');
    glGetProgramInfoLog(program, length, nullptr, log.data());
    return TrimLog(log);
}

} // namespace

void SetShaderBuildDirectory(const std::string& directory)
{
    std::string& stored = BuildDirectory();
    stored = directory;
    if (!stored.empty() && stored.back() != '/' && stored.back() != '\\')
        stored += '/';
}

const std::string& GetShaderBuildDirectory()
{
    return BuildDirectory();
}

Program::Program(std::string name) : name_(std::move(name)) {}

Program::~Program()
{
    Release();
}

Program& Program::AddStageFile(ShaderStage stage, std::string relativePath)
{
    stages_.push_back({stage, std::move(relativePath), {}});
    return *this;
}

Program& Program::AddStageSource(ShaderStage stage, std::string source)
{
    stages_.push_back({stage, {}, std::move(source)});
    return *this;
}

Program& Program::AddDefine(std::string name, std::string value)
{
    for (auto& define : defines_) {
        if (define.first == name) {
            define.second = std::move(value);
            return *this;
        }
    }
    defines_.emplace_back(std::move(name), std::move(value));
    return *this;
}

bool Program::Build()
{
    if (!detail::HasCurrentContext()) {
        rlog::Fail("Program '" + name_ + "': no OpenGL context is current", kBuildLabel);
        return false;
    }
    InitializeGlFunctions();
    if (stages_.empty()) {
        rlog::Fail("Program '" + name_ + "' has no stages", kBuildLabel);
        failed_ = true;
        return false;
    }

    std::vector<GLuint> shaders;
    shaders.reserve(stages_.size());
    auto discardShaders = [&shaders] {
        for (GLuint shader : shaders)
            glDeleteShader(shader);
    };

    std::string stageList;
    for (const Stage& stage : stages_) {
        const std::string origin = stage.file.empty() ? std::string("<inline source>") : stage.file;
        stageList += (stageList.empty() ? "'" : ", '") + origin + "'";

        std::string source = stage.source;
        if (!stage.file.empty()) {
            const std::string path = GetShaderBuildDirectory() + stage.file;
            if (!ReadFile(path, source)) {
                rlog::Fail("Program '" + name_ + "': cannot read the " + StageName(stage.stage) +
                               " stage file '" + path + "'",
                           kBuildLabel);
                discardShaders();
                failed_ = true;
                return false;
            }
        }
        source = InjectDefines(source, defines_);

        const GLuint shader = glCreateShader(StageType(stage.stage));
        const GLchar* text = source.c_str();
        const auto length = static_cast<GLint>(source.size());
        glShaderSource(shader, 1, &text, &length);
        glCompileShader(shader);
        GLint compiled = 0;
        glGetShaderiv(shader, GL_COMPILE_STATUS, &compiled);
        shaders.push_back(shader);
        if (compiled == 0) {
            rlog::Fail("Program '" + name_ + "': the " + StageName(stage.stage) + " stage '" + origin +
                           "' does not compile:\n" + ShaderLog(shader),
                       kBuildLabel);
            discardShaders();
            failed_ = true;
            return false;
        }
    }

    const GLuint program = glCreateProgram();
    for (GLuint shader : shaders)
        glAttachShader(program, shader);
    glLinkProgram(program);
    GLint linked = 0;
    glGetProgramiv(program, GL_LINK_STATUS, &linked);
    for (GLuint shader : shaders)
        glDetachShader(program, shader);
    discardShaders();
    if (linked == 0) {
        rlog::Fail("Program '" + name_ + "': linking " + stageList + " failed:\n" + ProgramLog(program),
                   kBuildLabel);
        glDeleteProgram(program);
        failed_ = true;
        return false;
    }

    DeleteGlObject(GlObjectKind::Program, id_);
    id_ = program;
    failed_ = false;
    uniforms_.clear();
    return true;
}

bool Program::Use()
{
    if (id_ == 0 && !failed_)
        Build();
    if (id_ == 0 || !detail::HasCurrentContext())
        return false;
    glUseProgram(id_);
    return true;
}

int Program::GetUniformLocation(const std::string& name)
{
    if (id_ == 0)
        return -1;
    if (auto found = uniforms_.find(name); found != uniforms_.end())
        return found->second;
    const int location = glGetUniformLocation(id_, name.c_str());
    uniforms_.emplace(name, location);
    return location;
}

void Program::SetUniform(const std::string& name, int value)
{
    if (const int location = GetUniformLocation(name); location >= 0)
        glUniform1i(location, value);
}

void Program::SetUniform(const std::string& name, float value)
{
    if (const int location = GetUniformLocation(name); location >= 0)
        glUniform1f(location, value);
}

void Program::SetUniform(const std::string& name, const glm::vec2& value)
{
    if (const int location = GetUniformLocation(name); location >= 0)
        glUniform2fv(location, 1, glm::value_ptr(value));
}

void Program::SetUniform(const std::string& name, const glm::vec3& value)
{
    if (const int location = GetUniformLocation(name); location >= 0)
        glUniform3fv(location, 1, glm::value_ptr(value));
}

void Program::SetUniform(const std::string& name, const glm::vec4& value)
{
    if (const int location = GetUniformLocation(name); location >= 0)
        glUniform4fv(location, 1, glm::value_ptr(value));
}

void Program::SetUniform(const std::string& name, const glm::mat3& value)
{
    if (const int location = GetUniformLocation(name); location >= 0)
        glUniformMatrix3fv(location, 1, GL_FALSE, glm::value_ptr(value));
}

void Program::SetUniform(const std::string& name, const glm::mat4& value)
{
    if (const int location = GetUniformLocation(name); location >= 0)
        glUniformMatrix4fv(location, 1, GL_FALSE, glm::value_ptr(value));
}

void Program::Release()
{
    DeleteGlObject(GlObjectKind::Program, id_);
    id_ = 0;
    failed_ = false;
    uniforms_.clear();
}

Program& ProgramList::Add(const std::string& name, const std::string& vertexFile,
                          const std::string& fragmentFile, const std::string& geometryFile)
{
    auto program = std::make_unique<Program>(name);
    program->AddStageFile(ShaderStage::Vertex, vertexFile);
    if (!geometryFile.empty())
        program->AddStageFile(ShaderStage::Geometry, geometryFile);
    program->AddStageFile(ShaderStage::Fragment, fragmentFile);
    return Add(std::move(program));
}

Program& ProgramList::Add(std::unique_ptr<Program> program)
{
    if (!program) {
        // A reference must come back; an empty program under an empty name fails quietly at Use.
        rlog::Fail("Cannot add a null program", "plor::ProgramList::Add");
        program = std::make_unique<Program>(std::string());
    }
    const std::string name = program->GetName();
    auto& slot = programs_[name];
    slot = std::move(program);
    return *slot;
}

Program* ProgramList::Get(std::string_view name)
{
    const auto found = programs_.find(name);
    if (found == programs_.end())
        return nullptr;
    Program* program = found->second.get();
    if (!program->IsBuilt() && !program->HasFailed())
        program->Build();
    return program;
}

bool ProgramList::Has(std::string_view name) const
{
    return programs_.find(name) != programs_.end();
}

Program& ProgramList::GetOrAdd(std::string_view name, const ProgramFiles& files)
{
    if (Program* known = Get(name))
        return *known;
    auto program = std::make_unique<Program>(std::string(name));
    program->AddStageFile(ShaderStage::Vertex, std::string(files.vertex));
    if (!files.geometry.empty())
        program->AddStageFile(ShaderStage::Geometry, std::string(files.geometry));
    program->AddStageFile(ShaderStage::Fragment, std::string(files.fragment));
    if (!files.define.empty())
        program->AddDefine(std::string(files.define));
    Program& added = Add(std::move(program));
    added.Build();
    return added;
}

bool ProgramList::ReloadAll()
{
    bool allBuilt = true;
    for (auto& entry : programs_)
        allBuilt = entry.second->Build() && allBuilt;
    return allBuilt;
}

void ProgramList::ReleaseAll()
{
    for (auto& entry : programs_)
        entry.second->Release();
}

} // namespace plor
