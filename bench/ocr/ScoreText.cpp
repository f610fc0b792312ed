// Scores the words a word processor read from a converted document against the known text:
// content F1 over words (each counted as often as it occurs) and reading order (1 - the edit
// distance over words divided by the longer sequence), as the engine's fidelity test does.
// Words are compared in lower case without punctuation; Japanese and Chinese, written
// without blanks, count character by character.
//   velmora_ocr_score <truth.txt> <output.txt|output.fodt>
// prints one line: f1 order recall precision

#include <QChar>
#include <QFile>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <cstdio>
#include <map>
#include <vector>

namespace {

bool ideographic(QChar c)
{
    const char16_t u = c.unicode();
    return (u >= 0x3040 && u <= 0x30ff) || (u >= 0x3400 && u <= 0x9fff) ||
           (u >= 0xf900 && u <= 0xfaff) || (u >= 0xff66 && u <= 0xff9f);
}

QStringList Words(const QString& text)
{
    QStringList words;
    QString word;
    const auto flush = [&] {
        if (!word.isEmpty())
            words.push_back(word);
        word.clear();
    };
    for (QChar c : text.toLower()) {
        if (c.isSpace()) {
            flush();
        } else if (ideographic(c)) {
            flush();
            words.push_back(QString(c));
        } else if (!c.isPunct() && !c.isSymbol() && c != QChar(0xfeff)) {
            word.push_back(c);
        }
    }
    flush();
    return words;
}

QString ReadText(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QString text = QString::fromUtf8(file.readAll());
    if (path.endsWith(".fodt")) {
        // The body of a flat word-processor document, frames included.
        text.remove(QRegularExpression("<office:binary-data>[^<]*</office:binary-data>"));
        text.remove(QRegularExpression(
            "<office:(font-face-decls|styles|automatic-styles|master-styles|meta|settings)>.*"
            "</office:\\1>",
            QRegularExpression::DotMatchesEverythingOption));
        text.replace(QRegularExpression("<[^>]*>"), " ");
    }
    return text;
}

double Matched(const QStringList& from, const QStringList& in)
{
    std::map<QString, int> available;
    for (const QString& word : in)
        ++available[word];
    int found = 0;
    for (const QString& word : from) {
        if (available[word] > 0) {
            --available[word];
            ++found;
        }
    }
    return from.isEmpty() ? 1 : static_cast<double>(found) / static_cast<double>(from.size());
}

double OrderMatch(const QStringList& expected, const QStringList& actual)
{
    const auto n = static_cast<std::size_t>(expected.size());
    const auto m = static_cast<std::size_t>(actual.size());
    std::vector<std::size_t> previous(m + 1);
    std::vector<std::size_t> current(m + 1);
    for (std::size_t j = 0; j <= m; ++j)
        previous[j] = j;
    for (std::size_t i = 1; i <= n; ++i) {
        current[0] = i;
        for (std::size_t j = 1; j <= m; ++j) {
            const bool same =
                expected[static_cast<qsizetype>(i - 1)] == actual[static_cast<qsizetype>(j - 1)];
            current[j] = std::min({previous[j] + 1, current[j - 1] + 1, previous[j - 1] + !same});
        }
        std::swap(previous, current);
    }
    const std::size_t longer = std::max<std::size_t>({n, m, 1});
    return 1.0 - static_cast<double>(previous[m]) / static_cast<double>(longer);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: velmora_ocr_score <truth.txt> <output.txt|output.fodt>\n");
        return 2;
    }
    const QStringList expected = Words(ReadText(QString::fromLocal8Bit(argv[1])));
    const QStringList actual = Words(ReadText(QString::fromLocal8Bit(argv[2])));
    const double recall = Matched(expected, actual);
    const double precision = Matched(actual, expected);
    const double f1 = recall + precision > 0 ? 2 * recall * precision / (recall + precision) : 0;
    std::printf("%.4f %.4f %.4f %.4f\n", f1, OrderMatch(expected, actual), recall, precision);
    return 0;
}
