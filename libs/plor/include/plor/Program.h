#pragma once
// Shader programs built from stage files under one build directory. Building needs a
// current context; everything else (declaring stages, naming) does not, so programs can be
// declared between frames and built lazily when first used.

#include <glm/fwd.hpp>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace plor {

/// The folder stage files are read from ("<assets>/shaders/"); a trailing '/' is added.
void SetShaderBuildDirectory(const std::string& directory);
const std::string& GetShaderBuildDirectory();

enum class ShaderStage { Vertex, Fragment, Geometry };

class Program {
public:
    explicit Program(std::string name);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// A stage read from build directory + `relativePath` when the program is built.
    Program& AddStageFile(ShaderStage stage, std::string relativePath);
    /// A stage given as source text (built-in shaders, tests).
    Program& AddStageSource(ShaderStage stage, std::string source);
    /// Inserted as "#define NAME VALUE" after the #version line of every stage.
    Program& AddDefine(std::string name, std::string value = "1");

    /// Compiles and links. On failure the compiler's log is reported with the stage file
    /// name and the previous working program, if any, stays in use.
    bool Build();
    bool IsBuilt() const { return id_ != 0; }
    /// True after the last Build failed (until the next Build or Release).
    bool HasFailed() const { return failed_; }
    /// Builds on first use; false when the program cannot be built.
    bool Use();

    const std::string& GetName() const { return name_; }
    unsigned int GetId() const { return id_; }

    /// -1 when the program has no active uniform of that name. Cached per program.
    int GetUniformLocation(const std::string& name);

    // Uniform setters for the program in use; unknown names are ignored.
    void SetUniform(const std::string& name, int value);
    void SetUniform(const std::string& name, float value);
    void SetUniform(const std::string& name, const glm::vec2& value);
    void SetUniform(const std::string& name, const glm::vec3& value);
    void SetUniform(const std::string& name, const glm::vec4& value);
    void SetUniform(const std::string& name, const glm::mat3& value);
    void SetUniform(const std::string& name, const glm::mat4& value);

    /// Deletes the GL program (deferred when no context is current).
    void Release();

private:
    struct Stage {
        ShaderStage stage;
        std::string file;
        std::string source;
    };
    std::string name_;
    std::vector<Stage> stages_;
    std::vector<std::pair<std::string, std::string>> defines_;
    unsigned int id_ = 0;
    bool failed_ = false;
    std::unordered_map<std::string, int> uniforms_;
};

/// The stage files of a program declared on first use (see ProgramList::GetOrAdd).
struct ProgramFiles {
    std::string_view vertex;
    std::string_view fragment;
    std::string_view geometry = {};
    /// Defined in every stage, so one source can be built as several variants.
    std::string_view define = {};
};

/// Named programs, built together and reloaded together.
class ProgramList {
public:
    /// Declares a program of a vertex and a fragment stage file (and an optional geometry
    /// stage); replaces a program of the same name. Built on first Get().
    Program& Add(const std::string& name, const std::string& vertexFile, const std::string& fragmentFile,
                 const std::string& geometryFile = {});
    /// Adds a program declared by the caller.
    Program& Add(std::unique_ptr<Program> program);

    /// The program, built if needed; null when unknown. A program that failed to build is
    /// still returned (its Use() fails) so callers can skip drawing quietly.
    Program* Get(std::string_view name);
    bool Has(std::string_view name) const;
    /// The program of that name, declared from `files` the first time it is asked for, then
    /// as Get(). Renderers call it every frame: looking up a known name allocates nothing.
    Program& GetOrAdd(std::string_view name, const ProgramFiles& files);

    /// Rebuilds every program from its files; returns false when any failed (those keep
    /// their previous build). Needs a current context.
    bool ReloadAll();
    void ReleaseAll();
    std::size_t Size() const { return programs_.size(); }

private:
    std::map<std::string, std::unique_ptr<Program>, std::less<>> programs_;
};

} // namespace plor
