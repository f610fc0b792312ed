#pragma once

// Where dialogs open: the main dialog centred on the window of the program that started us
// (or of the word processor we work for), every other dialog centred on the one that leads to
// it. Also the closing of all secondary dialogs.

#include <QString>

struct AppContext;
class DialogRuntime;
class Form;

// Placement arithmetic in twips, kept apart from the widgets so it can be checked alone.
struct TwipsBox final
{
    float left = 0;
    float top = 0;
    float width = 0;
    float height = 0;
};
// The dialog's new left and top when centred over the parent.
TwipsBox CenteredOver(const TwipsBox& dialog, const TwipsBox& parent, float screenHeight);

void CenterDialogOver(Form& dialog, const Form& parent);
void PlaceNearParent(Form& dialog, AppContext& context);
void PlaceNearWord(Form& dialog, AppContext& context);

// A page move: `next` is placed over `page`, `page` is hidden, and `next` is shown modally
// with the main dialog as its owner. The call returns when the last page of the walk closes.
void LeadOnTo(Form& page, Form& next, Form& welcome);

// Unloads every loaded dialog but the first one and the main dialog, from the last loaded on.
void UnloadOtherDialogs(DialogRuntime& runtime, const Form* welcome);
