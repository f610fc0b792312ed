#pragma once

// One conversion behind the progress dialog: the engine is run, the result is tested by its
// file's time, a .doc is finished through the word processor, and the result is opened or the
// user is told that it is done.

#include <functional>

struct AppContext;
class QWidget;

// `finalizing` runs when the finishing starts, so that the dialog can say so; message boxes
// are owned by `owner`.
void RunConversion(AppContext& context, QWidget* owner, const std::function<void()>& finalizing);
