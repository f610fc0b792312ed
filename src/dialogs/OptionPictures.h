#pragma once

// The illustrations of the option pages, drawn by the program itself: example pages for the
// document types, examples of the conversion methods and the two output file icons. Each
// illustration exists in English and, where it shows words, in Japanese.

#include <QList>
#include <QPixmap>
#include <QtGlobal>

#include <utility>

class QLabel;

enum class OptionPicture {
    SingleColumn,
    MultiColumn,
    Pleading,
    TabsAndSpaces,
    TextBoxes,
    FlowingText,
    DocFile,
    RtfFile,
};

enum class PictureLanguage { English, Japanese };

// The size every example page is drawn at; the file icons are smaller.
inline constexpr int ExamplePictureWidth = 120;
inline constexpr int ExamplePictureHeight = 156;
inline constexpr int FileIconSize = 32;

QPixmap DrawOptionPicture(OptionPicture picture,
                          PictureLanguage language = PictureLanguage::English);

// The band down the side of each option page.
QPixmap DrawPageDecoration(int width, int height);

// The picture table of the Japanese interface, by picture id (language offset / 10 plus the
// picture's number: 5005 single column to 5010 flowing text). An unknown id gives an empty
// pixmap.
QPixmap LoadResPicture(qint32 id);

// Puts the localised pictures of the user's language on their image controls; each pair is
// a control and its picture number n (the id is the language offset / 10 + n). A picture that
// can't be loaded leaves the control's own.
void LoadLocalisedPictures(const QList<std::pair<QLabel*, qint32>>& pictures);
