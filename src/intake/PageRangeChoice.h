#pragma once

// The page range list of the main dialog: "All", or a range taken in the page range dialog and
// shown in the words the user typed.

struct RunState;
class WelcomeForm;

// Runs on every choice in the list, and when code sets its index.
void ComboPageRangeChosen(RunState& state, WelcomeForm& welcome);
