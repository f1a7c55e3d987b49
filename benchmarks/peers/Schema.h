#pragma once

#include <filesystem>

namespace Benchmarks {

constexpr const char* schemaName = "benchmark.peers";
constexpr const char* schemaKey = "device-name";

/// Makes `folder` a folder of compiled GSettings schemas, with `schemaName` and its one text `schemaKey`.
void compileSchema(const std::filesystem::path& folder);

}  // namespace Benchmarks
