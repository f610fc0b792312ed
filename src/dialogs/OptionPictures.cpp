#include "dialogs/OptionPictures.h"

#include "core/LocalText.h"
#include "platform/UserLanguage.h"

#include <QFont>
#include <QLabel>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QPolygon>
#include <QStringList>

namespace {

const QColor PageInk(70, 70, 70);
const QColor TextLine(150, 150, 150);
const QColor HeadingInk(30, 30, 110);
const QColor BoxBlue(40, 90, 200);
const QColor MarkRed(190, 40, 40);

// The words an illustration shows, in each language.
struct Words final
{
    QString english;
    QString japanese;

    QString In(PictureLanguage language) const
    {
        return language == PictureLanguage::Japanese ? japanese : english;
    }
};

QFont PictureFont(PictureLanguage language, int pixelSize, bool bold = false)
{
    QFont font;
    if (language == PictureLanguage::Japanese)
        font.setFamilies({QStringLiteral("MS UI Gothic"), QStringLiteral("IPAGothic"),
                          QStringLiteral("Noto Sans CJK JP"), QStringLiteral("VL Gothic")});
    else
        font.setFamilies({QStringLiteral("Tahoma"), QStringLiteral("DejaVu Sans"),
                          QStringLiteral("Liberation Sans")});
    font.setPixelSize(pixelSize);
    font.setBold(bold);
    font.setStyleStrategy(QFont::PreferAntialias);
    return font;
}

QPixmap BlankPicture(int width, int height)
{
    QPixmap pixmap(width, height);
    pixmap.fill(Qt::transparent);
    return pixmap;
}

// A sheet of paper with a shadow and a folded corner; gives the area that may be written on.
QRect DrawSheet(QPainter& painter, const QRect& area)
{
    const QRect sheet = area.adjusted(0, 0, -3, -3);
    painter.fillRect(sheet.translated(3, 3), QColor(0, 0, 0, 60));
    const int fold = 14;
    QPolygon outline;
    outline << sheet.topLeft() << QPoint(sheet.right() - fold, sheet.top())
            << QPoint(sheet.right(), sheet.top() + fold) << sheet.bottomRight()
            << sheet.bottomLeft();
    painter.setPen(QPen(PageInk, 1));
    painter.setBrush(Qt::white);
    painter.drawPolygon(outline);
    QPolygon corner;
    corner << QPoint(sheet.right() - fold, sheet.top())
           << QPoint(sheet.right() - fold, sheet.top() + fold)
           << QPoint(sheet.right(), sheet.top() + fold);
    painter.setBrush(QColor(225, 225, 225));
    painter.drawPolygon(corner);
    painter.setBrush(Qt::NoBrush);
    return sheet.adjusted(9, 9, -9, -9);
}

// Grey bars that stand for lines of text. The last line of a paragraph is shorter.
int DrawTextLines(QPainter& painter, int left, int top, int width, int count, int pitch,
                  int indent = 0)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(TextLine);
    int y = top;
    for (int line = 0; line < count; ++line) {
        const int start = line == 0 ? left + indent : left;
        int length = left + width - start;
        if (line == count - 1)
            length = length * 3 / 5;
        painter.drawRect(start, y, length, 2);
        y += pitch;
    }
    painter.setBrush(Qt::NoBrush);
    return y;
}

void DrawHeading(QPainter& painter, const QRect& box, const QString& text, PictureLanguage language,
                 int pixelSize, Qt::Alignment alignment = Qt::AlignLeft)
{
    painter.setPen(HeadingInk);
    painter.setFont(PictureFont(language, pixelSize, true));
    painter.drawText(box, static_cast<int>(alignment | Qt::AlignVCenter), text);
}

// The caption strip under a method example.
QRect DrawCaption(QPainter& painter, const QRect& area, const QString& text,
                  PictureLanguage language)
{
    const int height = 16;
    const QRect strip(area.left(), area.bottom() - height + 1, area.width(), height);
    painter.fillRect(strip, QColor(40, 60, 120));
    painter.setPen(Qt::white);
    painter.setFont(PictureFont(language, 10, true));
    painter.drawText(strip, Qt::AlignCenter, text);
    return {area.left(), area.top(), area.width(), area.height() - height - 3};
}

void DrawSingleColumn(QPainter& painter, PictureLanguage language)
{
    const QRect text = DrawSheet(painter, QRect(0, 0, ExamplePictureWidth, ExamplePictureHeight));
    DrawHeading(painter, QRect(text.left(), text.top(), text.width(), 16),
                Words{QStringLiteral("Report"), QStringLiteral("報告書")}.In(language), language,
                12, Qt::AlignHCenter);
    int y = text.top() + 22;
    for (const int lines : {5, 6, 4, 5}) {
        y = DrawTextLines(painter, text.left(), y, text.width(), lines, 5, 6);
        y += 5;
    }
}

void DrawMultiColumn(QPainter& painter, PictureLanguage language)
{
    const QRect text = DrawSheet(painter, QRect(0, 0, ExamplePictureWidth, ExamplePictureHeight));
    DrawHeading(painter, QRect(text.left(), text.top(), text.width(), 16),
                Words{QStringLiteral("Newsletter"), QStringLiteral("会報")}.In(language), language,
                12, Qt::AlignHCenter);
    painter.setPen(QPen(PageInk, 1));
    painter.drawLine(text.left(), text.top() + 18, text.right(), text.top() + 18);

    const int gap = 6;
    const int column = (text.width() - gap) / 2;
    const int top = text.top() + 24;
    const int left2 = text.left() + column + gap;
    int y = DrawTextLines(painter, text.left(), top, column, 8, 5, 4);
    DrawTextLines(painter, text.left(), y + 5, column, 10, 5, 4);

    // A picture in the second column, with text around it.
    const QRect photo(left2, top, column, 30);
    painter.setPen(QPen(PageInk, 1));
    painter.setBrush(QColor(170, 200, 230));
    painter.drawRect(photo);
    painter.setBrush(QColor(90, 140, 80));
    QPolygon hill;
    hill << photo.bottomLeft() << QPoint(photo.left() + column / 3, photo.top() + 14)
         << QPoint(photo.left() + column * 2 / 3, photo.bottom() - 6) << photo.bottomRight();
    painter.drawPolygon(hill);
    painter.setBrush(Qt::NoBrush);
    y = DrawTextLines(painter, left2, photo.bottom() + 6, column, 6, 5, 4);
    DrawTextLines(painter, left2, y + 5, column, 5, 5, 4);
}

void DrawPleading(QPainter& painter, PictureLanguage language)
{
    const QRect sheet = DrawSheet(painter, QRect(0, 0, ExamplePictureWidth, ExamplePictureHeight));
    const int ruleLeft = sheet.left() + 10;
    const int ruleRight = sheet.right();
    painter.setPen(QPen(PageInk, 1));
    painter.drawLine(ruleLeft, sheet.top() - 8, ruleLeft, sheet.bottom() + 8);
    painter.drawLine(ruleLeft + 2, sheet.top() - 8, ruleLeft + 2, sheet.bottom() + 8);
    painter.drawLine(ruleRight, sheet.top(), ruleRight, sheet.bottom() + 8);

    const int textLeft = ruleLeft + 6;
    const int textWidth = ruleRight - 5 - textLeft;
    DrawHeading(painter, QRect(textLeft, sheet.top(), textWidth, 12),
                Words{QStringLiteral("IN THE COURT"), QStringLiteral("裁判所")}.In(language),
                language, 9, Qt::AlignHCenter);

    // Numbered margin lines, and text on every second one: the pleading is double-spaced.
    const int pitch = 9;
    painter.setFont(PictureFont(PictureLanguage::English, 6));
    int number = 1;
    for (int y = sheet.top() + 18; y + pitch <= sheet.bottom() + 6; y += pitch, ++number) {
        painter.setPen(PageInk);
        painter.drawText(QRect(sheet.left() - 8, y - 4, 16, 8), Qt::AlignRight | Qt::AlignVCenter,
                         QString::number(number));
        if (number % 2 == 1) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(TextLine);
            const int length = number % 6 == 5 ? textWidth / 2 : textWidth;
            painter.drawRect(textLeft, y - 1, length, 2);
            painter.setBrush(Qt::NoBrush);
        }
    }
}

// Lines of text whose blanks are visible marks: arrows for tabs and dots for spaces.
void DrawTabsAndSpaces(QPainter& painter, PictureLanguage language)
{
    QRect area(0, 0, ExamplePictureWidth, ExamplePictureHeight);
    area = DrawCaption(
        painter, area,
        Words{QStringLiteral("Tabs and spaces"), QStringLiteral("タブとスペース")}.In(language),
        language);
    const QRect text = DrawSheet(painter, area);

    // Each row: lengths of words; 0 stands for a tab, -1 for a space.
    const QList<QList<int>> rows = {
        {20, -1, 14, 0, 22}, {0, 30, -1, 12},     {16, -1, 10, -1, 18, 0, 8},
        {0, 0, 24},          {28, -1, 20, -1, 8}, {12, 0, 12, 0, 12},
        {22, -1, 16},        {0, 18, -1, 26},     {14, -1, 14, -1, 14},
        {30, 0, 10},         {0, 0, 12, -1, 10},  {18, -1, 22},
    };
    int y = text.top() + 2;
    for (const QList<int>& row : rows) {
        int x = text.left();
        for (const int item : row) {
            if (item > 0) {
                const int length = qMin(item, text.right() - x);
                painter.fillRect(x, y, length, 2, TextLine);
                x += length;
            } else if (item == 0) {
                painter.setPen(QPen(MarkRed, 1));
                painter.drawLine(x + 2, y + 1, x + 11, y + 1);
                painter.drawLine(x + 8, y - 2, x + 11, y + 1);
                painter.drawLine(x + 8, y + 4, x + 11, y + 1);
                x += 14;
            } else {
                painter.fillRect(x + 2, y, 2, 2, MarkRed);
                x += 6;
            }
        }
        y += 9;
        if (y > text.bottom())
            break;
    }
}

// Blocks of text in frames that sit wherever the original put them.
void DrawTextBoxes(QPainter& painter, PictureLanguage language)
{
    QRect area(0, 0, ExamplePictureWidth, ExamplePictureHeight);
    area = DrawCaption(
        painter, area,
        Words{QStringLiteral("Text boxes"), QStringLiteral("テキストボックス")}.In(language),
        language);
    const QRect text = DrawSheet(painter, area);

    const QList<QRect> boxes = {
        QRect(text.left(), text.top(), text.width(), 16),
        QRect(text.left(), text.top() + 22, text.width() / 2 - 3, 40),
        QRect(text.left() + text.width() / 2 + 3, text.top() + 22, text.width() / 2 - 3, 26),
        QRect(text.left() + 8, text.top() + 68, text.width() - 8, 28),
    };
    for (const QRect& box : boxes) {
        if (box.bottom() > text.bottom())
            continue;
        DrawTextLines(painter, box.left() + 3, box.top() + 4, box.width() - 6,
                      (box.height() - 4) / 6, 6);
        painter.setPen(QPen(BoxBlue, 1, Qt::DashLine));
        painter.drawRect(box);
    }
    // The handles of the selected box.
    const QRect& selected = boxes[1];
    painter.setPen(QPen(BoxBlue, 1));
    painter.setBrush(Qt::white);
    for (const QPoint& corner :
         {selected.topLeft(), selected.topRight(), selected.bottomLeft(), selected.bottomRight()})
        painter.drawRect(corner.x() - 2, corner.y() - 2, 4, 4);
    painter.setBrush(Qt::NoBrush);
}

// One column of paragraphs, with the arrow that says the text runs on.
void DrawFlowingText(QPainter& painter, PictureLanguage language)
{
    QRect area(0, 0, ExamplePictureWidth, ExamplePictureHeight);
    area = DrawCaption(
        painter, area,
        Words{QStringLiteral("Flowing text"), QStringLiteral("単純なレイアウト")}.In(language),
        language);
    const QRect text = DrawSheet(painter, area);
    int y = text.top() + 2;
    y = DrawTextLines(painter, text.left(), y, text.width() - 12, 6, 5, 6) + 4;
    const QRect picture(text.left() + 10, y, text.width() - 32, 18);
    painter.setPen(QPen(PageInk, 1));
    painter.setBrush(QColor(170, 200, 230));
    painter.drawRect(picture);
    painter.setBrush(Qt::NoBrush);
    y = picture.bottom() + 6;
    y = DrawTextLines(painter, text.left(), y, text.width() - 12, 6, 5, 6);

    QPainterPath arrow;
    const int x = text.right() - 4;
    arrow.moveTo(x, text.top() + 4);
    arrow.cubicTo(x + 6, text.top() + 30, x + 6, y - 30, x, y - 4);
    painter.setPen(QPen(MarkRed, 1.5));
    painter.drawPath(arrow);
    painter.drawLine(x, y - 4, x - 3, y - 9);
    painter.drawLine(x, y - 4, x + 4, y - 8);
}

void DrawFileIcon(QPainter& painter, const QString& extension, const QColor& band,
                  const QString& letter)
{
    const QRect sheet(5, 0, 23, 31);
    const int fold = 6;
    QPolygon outline;
    outline << sheet.topLeft() << QPoint(sheet.right() - fold, sheet.top())
            << QPoint(sheet.right(), sheet.top() + fold) << sheet.bottomRight()
            << sheet.bottomLeft();
    painter.setPen(QPen(PageInk, 1));
    painter.setBrush(Qt::white);
    painter.drawPolygon(outline);
    painter.setBrush(Qt::NoBrush);
    for (int y = sheet.top() + 5; y < sheet.top() + 12; y += 3)
        painter.fillRect(sheet.left() + 3, y, sheet.width() - 10, 1, TextLine);

    const QRect label(1, 11, 21, 10);
    painter.fillRect(label, band);
    painter.setPen(Qt::white);
    painter.setFont(PictureFont(PictureLanguage::English, 8, true));
    painter.drawText(label, Qt::AlignCenter, letter);
    painter.setPen(band.darker(130));
    painter.setFont(PictureFont(PictureLanguage::English, 6, true));
    painter.drawText(QRect(sheet.left() + 1, 22, sheet.width() - 1, 8), Qt::AlignCenter, extension);
}

void DrawPicture(QPainter& painter, OptionPicture picture, PictureLanguage language)
{
    switch (picture) {
    case OptionPicture::SingleColumn:
        DrawSingleColumn(painter, language);
        break;
    case OptionPicture::MultiColumn:
        DrawMultiColumn(painter, language);
        break;
    case OptionPicture::Pleading:
        DrawPleading(painter, language);
        break;
    case OptionPicture::TabsAndSpaces:
        DrawTabsAndSpaces(painter, language);
        break;
    case OptionPicture::TextBoxes:
        DrawTextBoxes(painter, language);
        break;
    case OptionPicture::FlowingText:
        DrawFlowingText(painter, language);
        break;
    case OptionPicture::DocFile:
        DrawFileIcon(painter, QStringLiteral(".DOC"), QColor(30, 80, 170), QStringLiteral("W"));
        break;
    case OptionPicture::RtfFile:
        DrawFileIcon(painter, QStringLiteral(".RTF"), QColor(170, 60, 30), QStringLiteral("R"));
        break;
    }
}

bool IsFileIcon(OptionPicture picture)
{
    return picture == OptionPicture::DocFile || picture == OptionPicture::RtfFile;
}

}  // namespace

QPixmap DrawOptionPicture(OptionPicture picture, PictureLanguage language)
{
    QPixmap pixmap = IsFileIcon(picture) ? BlankPicture(FileIconSize, FileIconSize)
                                         : BlankPicture(ExamplePictureWidth, ExamplePictureHeight);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setRenderHint(QPainter::TextAntialiasing, true);
    DrawPicture(painter, picture, language);
    painter.end();
    return pixmap;
}

QPixmap DrawPageDecoration(int width, int height)
{
    QPixmap pixmap(qMax(width, 1), qMax(height, 1));
    QPainter painter(&pixmap);
    QLinearGradient shade(0, 0, 0, height);
    shade.setColorAt(0.0, QColor(20, 40, 110));
    shade.setColorAt(1.0, QColor(70, 120, 200));
    painter.fillRect(pixmap.rect(), shade);

    // A PDF page that turns into a Word document, at the top of the band.
    painter.setRenderHint(QPainter::Antialiasing, true);
    const int size = qMin(width / 3, 36);
    const int x = (width - size * 2 - 8) / 2;
    const int y = 16;
    const QRect pdf(x, y, size, size * 4 / 3);
    const QRect word(x + size + 8, y + size / 2, size, size * 4 / 3);
    for (const auto& [page, band, letter] :
         {std::tuple{pdf, QColor(200, 40, 40), QStringLiteral("PDF")},
          std::tuple{word, QColor(30, 80, 170), QStringLiteral("W")}}) {
        painter.setPen(QPen(QColor(230, 230, 240), 1));
        painter.setBrush(Qt::white);
        painter.drawRect(page);
        painter.fillRect(page.left(), page.top() + page.height() / 3, page.width(),
                         page.height() / 4, band);
        painter.setPen(Qt::white);
        QFont font = PictureFont(PictureLanguage::English, qMax(size / 4, 6), true);
        painter.setFont(font);
        painter.drawText(
            QRect(page.left(), page.top() + page.height() / 3, page.width(), page.height() / 4),
            Qt::AlignCenter, letter);
    }
    painter.setPen(QPen(Qt::white, 2));
    const int arrowY = word.top() + word.height() + 10;
    painter.drawLine(pdf.center().x(), pdf.bottom() + 4, pdf.center().x(), arrowY);
    painter.drawLine(pdf.center().x(), arrowY, word.left() - 2, arrowY);
    painter.drawLine(word.left() - 2, arrowY, word.left() - 7, arrowY - 4);
    painter.drawLine(word.left() - 2, arrowY, word.left() - 7, arrowY + 4);
    painter.end();
    return pixmap;
}

QPixmap LoadResPicture(qint32 id)
{
    switch (id) {
    case 5005:
        return DrawOptionPicture(OptionPicture::SingleColumn, PictureLanguage::Japanese);
    case 5006:
        return DrawOptionPicture(OptionPicture::MultiColumn, PictureLanguage::Japanese);
    case 5007:
        return DrawOptionPicture(OptionPicture::Pleading, PictureLanguage::Japanese);
    case 5008:
        return DrawOptionPicture(OptionPicture::TextBoxes, PictureLanguage::Japanese);
    case 5009:
        return DrawOptionPicture(OptionPicture::TabsAndSpaces, PictureLanguage::Japanese);
    case 5010:
        return DrawOptionPicture(OptionPicture::FlowingText, PictureLanguage::Japanese);
    default:
        return {};
    }
}

void LoadLocalisedPictures(const QList<std::pair<QLabel*, qint32>>& pictures)
{
    const qint32 pictureBase = LanguageOffset(GetUserDefaultLangID()) / 10;
    for (const auto& [image, number] : pictures) {
        const QPixmap picture = LoadResPicture(pictureBase + number);
        if (!picture.isNull())
            image->setPixmap(picture);
    }
}
