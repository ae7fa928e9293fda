// An evaluation as the program prints and draws it.
#pragma once

#include <string>
#include <vector>

#include "tools/Drawing.h"
#include "tools/Evaluation.h"

namespace lirvox::tools {

/// How many settings (lengths times minimums) a picture has room for.
constexpr std::size_t kMostDrawnSettings = palette::lines.size();

/// The rows on the standard output stream: a table for people, or a JSON object each.
void printEvaluation(const std::vector<EvaluatedRow>& rows, const std::string& format);

/// The picture of the rates by degradation, of up to `kMostDrawnSettings` settings.
/// `headline` says what was evaluated. Returns what kept it from being written.
std::error_code drawEvaluation(const std::vector<EvaluatedRow>& rows, const std::string& headline,
                               const std::string& path);

}  // namespace lirvox::tools
