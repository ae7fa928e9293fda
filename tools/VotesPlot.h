// The picture of how the tracks of a database are aligned with a sound.
#pragma once

#include "tools/Drawing.h"
#include "tools/Examination.h"
#include "tools/Titles.h"

namespace lirvox::tools {

/// How much room the chart takes below its place's top, all labels included.
double votesHeight(const Examination& examined);

/// Draws the offset histograms of the best aligned tracks one below the other, each by the
/// track's own hits, and marks the winner. Between `left` and `right`; there must be hits.
void drawVotes(Drawing& drawing, double left, double right, double top, const Examination& examined,
               const Titles& titles);

}  // namespace lirvox::tools
