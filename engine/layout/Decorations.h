#pragma once

// Drawings that belong to the text: a line under or through a run is its underline or its
// strike, a fill behind a run its highlight, a box around paragraphs their border and shading.

#include "layout/PageLayout.h"

#include <vector>

namespace velmora {

// Marks the glyphs that a drawing underlines, strikes through or highlights; the drawings
// taken are marked in `used`.
void DecorateRuns(std::vector<Fragment>& fragments, const std::vector<Drawing>& drawings,
                  std::vector<bool>& used);

// Gives the paragraphs that a drawn rectangle encloses, with nothing else, the rectangle's
// outline as their border and its fill as their shading; the drawings taken are marked in
// `used`.
void BoxParagraphs(std::vector<Block>& blocks, const std::vector<Drawing>& drawings,
                   std::vector<bool>& used);

}  // namespace velmora
