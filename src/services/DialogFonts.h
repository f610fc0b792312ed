#pragma once

// The fonts the dialogs are defined in (Tahoma, and MS UI Gothic for Japanese) are Windows
// fonts; this maps them to fonts of this system with the same widths, so that every caption
// fits the control it was laid out for.

// Installs the mapping for the process. Safe to call more than once.
void InstallDialogFonts();
