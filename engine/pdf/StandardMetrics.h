#pragma once

// Advance widths of the standard faces (Times, Helvetica, Courier, each upright and slanted,
// regular and bold), read once from MuPDF's built-in fonts. Word processors set the common
// families in faces of these very widths (Times New Roman, Arial, Courier New and their
// metric twins), so the engine can tell how a line it writes will wrap.

namespace velmora {

enum class StandardFamily { Serif, Sans, Mono };

// The advance of `c` in ems, or a negative value when the face has no glyph for it.
float StandardAdvance(StandardFamily family, bool bold, bool italic, char32_t c);

}  // namespace velmora
