#include "Schema.h"

#include <fstream>
#include <stdexcept>

#include "support/ChildProcess.h"

namespace Benchmarks {

void compileSchema(const std::filesystem::path& folder) {
    std::ofstream(folder / "benchmark.gschema.xml")
        << R"(<schemalist><schema id=")" << schemaName << R"(" path="/benchmark/peers/"><key name=")" << schemaKey
        << R"(" type="s"><default>'TV'</default></key></schema></schemalist>)";
    const TestSupport::Finished compiler = TestSupport::run({"glib-compile-schemas", "--strict", folder.string()});
    if (compiler.status != 0) {
        throw std::runtime_error("the schema was not compiled: " + compiler.errors);
    }
}

}  // namespace Benchmarks
