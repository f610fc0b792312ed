#pragma once

// The part of the Convert command that settles the target with the user: the fallback to
// Rich Text Format when no word processor can finish a .DOC, and the save dialog.

struct AppContext;
class QWidget;

// True when OutputPath holds the confirmed target; false ends the Convert command and leaves
// the main dialog open.
bool AskOutputFile(AppContext& context, QWidget* owner);
