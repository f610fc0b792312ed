#include "ocr/TesseractReader.h"

#include <tesseract/baseapi.h>
#include <tesseract/ocrclass.h>
#include <tesseract/resultiterator.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <mutex>
#include <type_traits>

#include <dlfcn.h>

namespace velmora {

namespace {

// Tesseract's set-up reads shared tables; one engine starts at a time.
std::mutex g_startLock;

// Tesseract parallelises its own inner loops with OpenMP. With a worker on every core that
// only oversubscribes them, several times slower, so those loops run on the reader's thread.
// OpenMP keeps this setting per thread, and a reader is made on the thread that uses it.
void keepTesseractSingleThreaded()
{
    using SetLevels = void (*)(int);
    if (void* symbol = dlsym(RTLD_DEFAULT, "omp_set_max_active_levels"))
        reinterpret_cast<SetLevels>(symbol)(0);
}

bool cancelled(void* stop, int)
{
    return stop && static_cast<const std::atomic<bool>*>(stop)->load(std::memory_order_relaxed);
}

int utf8Length(const std::string& text)
{
    return static_cast<int>(
        std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xc0) != 0x80; }));
}

// How much of the page was read with confidence: the characters of its confident words.
int confidentCharacters(const OcrResult& result)
{
    int count = 0;
    for (const OcrWord& word : result.words) {
        if (word.confidence >= ConfidenceFloor)
            count += utf8Length(word.text);
    }
    return count;
}

// The mean confidence of the page's characters.
float meanConfidence(const OcrResult& result)
{
    float sum = 0;
    int count = 0;
    for (const OcrWord& word : result.words) {
        const int length = utf8Length(word.text);
        sum += word.confidence * static_cast<float>(length);
        count += length;
    }
    return count ? sum / static_cast<float>(count) : 0;
}

// A word of letters, digits or ideographs, as opposed to stray marks.
bool wordLike(const std::string& text)
{
    return std::any_of(text.begin(), text.end(), [](char c) {
        const auto u = static_cast<unsigned char>(c);
        return std::isalnum(u) || u >= 0x80;
    });
}

PixelBox boxAt(const tesseract::PageIterator& it, tesseract::PageIteratorLevel level)
{
    PixelBox box;
    it.BoundingBox(level, &box.left, &box.top, &box.right, &box.bottom);
    return box;
}

// The box of a word's symbols without the marks at its ends: dust beside a word is read
// as a stray quote or stop, and spoils its confidence.
PixelBox letters(const tesseract::LTRResultIterator& at)
{
    tesseract::LTRResultIterator symbol(at);
    std::vector<std::pair<bool, PixelBox>> symbols;
    do {
        std::unique_ptr<char[]> text(symbol.GetUTF8Text(tesseract::RIL_SYMBOL));
        symbols.emplace_back(text && wordLike(text.get()), boxAt(symbol, tesseract::RIL_SYMBOL));
    } while (!symbol.IsAtFinalElement(tesseract::RIL_WORD, tesseract::RIL_SYMBOL) &&
             symbol.Next(tesseract::RIL_SYMBOL));
    std::size_t first = 0;
    std::size_t end = symbols.size();
    while (first < end && !symbols[first].first)
        ++first;
    while (end > first && !symbols[end - 1].first)
        --end;
    if (first == end)
        return {};
    PixelBox box = symbols[first].second;
    for (std::size_t i = first + 1; i < end; ++i) {
        const PixelBox& b = symbols[i].second;
        box = PixelBox{std::min(box.left, b.left), std::min(box.top, b.top),
                       std::max(box.right, b.right), std::max(box.bottom, b.bottom)};
    }
    return box;
}

bool better(const OcrResult& candidate, const OcrResult& current)
{
    return candidate.read && confidentCharacters(candidate) > confidentCharacters(current);
}

}  // namespace

std::vector<PixelBox> LeftoverInk(const ScanImage& image, const OcrResult& result,
                                  const std::atomic<bool>* stop)
{
    constexpr uint8_t Dark = 128;
    const float scale = image.zoom * 72 / 300;
    const auto w = static_cast<std::size_t>(image.width);
    // 0: free, 1: covered by what Tesseract found, 2: already walked.
    std::vector<uint8_t> mark(image.grey.size(), 0);
    const auto cover = [&](const PixelBox& box) {
        const int pad = static_cast<int>(3 * scale) + 1;
        const std::size_t x0 = static_cast<std::size_t>(std::clamp(box.left - pad, 0, image.width));
        const std::size_t x1 =
            static_cast<std::size_t>(std::clamp(box.right + pad, 0, image.width));
        const std::size_t y0 = static_cast<std::size_t>(std::clamp(box.top - pad, 0, image.height));
        const std::size_t y1 =
            static_cast<std::size_t>(std::clamp(box.bottom + pad, 0, image.height));
        for (std::size_t y = y0; y < y1; ++y)
            std::fill(mark.begin() + static_cast<std::ptrdiff_t>(y * w + x0),
                      mark.begin() + static_cast<std::ptrdiff_t>(y * w + x1), 1);
    };
    for (const OcrWord& word : result.words)
        cover(word.box);
    for (const PixelBox& box : result.pictures)
        cover(box);
    for (const PixelBox& box : result.rules)
        cover(box);

    // Spots of ink, each walked once.
    const auto smallest = static_cast<std::size_t>(20 * scale * scale);
    constexpr std::size_t MostSpots = 400;
    std::vector<PixelBox> spots;
    InkWalker walker(image.grey, w, Dark, stop);
    const bool whole = walker.eachSpot(mark, 2, [&](const InkSpot& spot) {
        if (spot.pixels >= smallest)
            spots.push_back(PixelBox{static_cast<int>(spot.left), static_cast<int>(spot.top),
                                     static_cast<int>(spot.right) + 1,
                                     static_cast<int>(spot.bottom) + 1});
        // Ink everywhere is a picture or a texture Tesseract already judged.
        return spots.size() <= MostSpots;
    });
    if (!whole)
        return {};

    // Spots a word space or a line's gap apart belong together.
    const int gapX = static_cast<int>(20 * scale);
    const int gapY = static_cast<int>(8 * scale);
    bool merged = true;
    while (merged) {
        merged = false;
        for (std::size_t i = 0; i < spots.size() && !merged; ++i) {
            for (std::size_t j = i + 1; j < spots.size(); ++j) {
                const PixelBox& a = spots[i];
                const PixelBox& b = spots[j];
                if (a.left - gapX <= b.right && b.left - gapX <= a.right &&
                    a.top - gapY <= b.bottom && b.top - gapY <= a.bottom) {
                    spots[i] = PixelBox{std::min(a.left, b.left), std::min(a.top, b.top),
                                        std::max(a.right, b.right), std::max(a.bottom, b.bottom)};
                    spots.erase(spots.begin() + static_cast<std::ptrdiff_t>(j));
                    merged = true;
                    break;
                }
            }
        }
    }
    // Ruled lines are a table's or a form's, no text.
    const int thin = static_cast<int>(8 * scale);
    std::erase_if(spots, [thin](const PixelBox& box) {
        return box.bottom - box.top <= thin || box.right - box.left <= thin;
    });
    std::sort(spots.begin(), spots.end(), [](const PixelBox& a, const PixelBox& b) {
        return (a.right - a.left) * (a.bottom - a.top) > (b.right - b.left) * (b.bottom - b.top);
    });
    constexpr std::size_t MostClusters = 30;
    if (spots.size() > MostClusters)
        spots.resize(MostClusters);
    return spots;
}

TesseractReader::TesseractReader(LanguageChoice languages, const std::atomic<bool>* stop)
    : m_choice(std::move(languages)), m_stop(stop)
{
    keepTesseractSingleThreaded();
}

TesseractReader::~TesseractReader()
{
    if (m_api)
        m_api->End();
    if (m_osd)
        m_osd->End();
}

bool TesseractReader::load(const std::string& languages)
{
    if (m_api && m_loaded == languages)
        return true;
    std::lock_guard lock(g_startLock);
    if (!m_api)
        m_api = std::make_unique<tesseract::TessBaseAPI>();
    m_api->End();
    m_loaded.clear();
    // Tesseract's own remarks would otherwise land on the engine's standard error.
    std::vector<std::string> names{"debug_file"};
    std::vector<std::string> values{"/dev/null"};
    if (m_api->Init(m_choice.dataPath.c_str(), languages.c_str(), tesseract::OEM_DEFAULT, nullptr,
                    0, &names, &values, false) != 0)
        return false;
    m_loaded = languages;
    return true;
}

OcrResult TesseractReader::read(ScanImage& image)
{
    // A language a page's script asked for is kept for the pages after it, which are
    // likely in the same script.
    std::string base = m_scriptLanguage;
    for (const std::string& language : m_choice.languages)
        base += (base.empty() ? "" : "+") + language;
    if (m_choice.languages.empty() || !load(base))
        return {};
    // Tesseract reads a copy without dust; the page's own pixels stay for its pictures.
    ScanImage clean{image.width, image.height, image.zoom, image.withoutSpecks(m_stop), {}};
    OcrResult best = recognise(clean);
    if (!best.read)
        return best;

    // A page of words read with little confidence may lie on its side, upside down, or be
    // in another script.
    constexpr float Doubtful = 75;
    int turns = 0;
    std::string script;
    if (best.words.size() >= 3 && meanConfidence(best) < Doubtful && m_choice.scriptDetection &&
        detect(clean, turns, script)) {
        if (turns != 0) {
            ScanImage trial = clean;
            trial.turnClockwise(turns);
            OcrResult turned = recognise(trial);
            if (better(turned, best)) {
                clean = std::move(trial);
                image.turnClockwise(turns);
                best = std::move(turned);
                best.turns = turns;
            }
        }
        const std::string language = LanguageForScript(script, m_choice.dataPath);
        if (!language.empty() && (base + "+").find(language + "+") == std::string::npos) {
            if (load(language + "+" + base)) {
                OcrResult other = recognise(clean);
                other.turns = best.turns;
                if (better(other, best)) {
                    best = std::move(other);
                    m_scriptLanguage = language;
                }
            } else if (!load(base)) {
                return best;
            }
        }
    }
    reconsider(clean, best);
    readLeftovers(clean, best);
    return best;
}

void TesseractReader::reconsider(const ScanImage& image, OcrResult& result)
{
    // Within a line, a word's confidence suffers from what stands beside it; read alone, a
    // doubtful word often turns out plain. Pages full of doubt are not worth the time.
    constexpr std::size_t MostWords = 40;
    std::vector<OcrWord*> doubtful;
    for (OcrWord& word : result.words) {
        if (word.confidence < ConfidenceFloor && wordLike(word.text))
            doubtful.push_back(&word);
    }
    if (doubtful.empty() || doubtful.size() > MostWords)
        return;
    tesseract::TessBaseAPI& api = *m_api;
    api.SetPageSegMode(tesseract::PSM_SINGLE_WORD);
    api.SetImage(image.grey.data(), image.width, image.height, 1, image.width);
    api.SetSourceResolution(static_cast<int>(std::lround(image.zoom * 72)));
    const int pad = static_cast<int>(image.zoom * 72 / 300 * 8);
    for (OcrWord* word : doubtful) {
        const bool trimmed = word->core.right > word->core.left;
        const PixelBox& box = trimmed ? word->core : word->box;
        // Without its stray marks the letters stand closer to their neighbours' edges.
        const int margin = trimmed ? pad / 4 : pad;
        const int left = std::max(0, box.left - margin);
        const int top = std::max(0, box.top - pad);
        const int right = std::min(image.width, box.right + margin);
        const int bottom = std::min(image.height, box.bottom + pad);
        if (right <= left || bottom <= top)
            continue;
        api.SetRectangle(left, top, right - left, bottom - top);
        tesseract::ETEXT_DESC monitor;
        monitor.cancel = cancelled;
        monitor.cancel_this = const_cast<std::atomic<bool>*>(m_stop);
        if (api.Recognize(&monitor) != 0)
            break;
        std::unique_ptr<char[]> text(api.GetUTF8Text());
        const auto confidence = static_cast<float>(api.MeanTextConf());
        if (!text || confidence <= word->confidence)
            continue;
        std::string read = text.get();
        while (!read.empty() && std::isspace(static_cast<unsigned char>(read.back())))
            read.pop_back();
        if (!read.empty() && read.find(' ') == std::string::npos) {
            word->text = read;
            word->confidence = confidence;
        }
    }
    api.Clear();
}

bool TesseractReader::detect(const ScanImage& image, int& turns, std::string& script)
{
    if (m_osdFailed)
        return false;
    if (!m_osd) {
        std::lock_guard lock(g_startLock);
        m_osd = std::make_unique<tesseract::TessBaseAPI>();
        std::vector<std::string> names{"debug_file"};
        std::vector<std::string> values{"/dev/null"};
        if (m_osd->Init(m_choice.dataPath.c_str(), "osd", tesseract::OEM_TESSERACT_ONLY, nullptr, 0,
                        &names, &values, false) != 0) {
            m_osdFailed = true;
            return false;
        }
        m_osd->SetPageSegMode(tesseract::PSM_OSD_ONLY);
    }
    m_osd->SetImage(image.grey.data(), image.width, image.height, 1, image.width);
    m_osd->SetSourceResolution(static_cast<int>(std::lround(image.zoom * 72)));
    int degrees = 0;
    float orientationConfidence = 0;
    const char* name = nullptr;
    float scriptConfidence = 0;
    const bool found =
        m_osd->DetectOrientationScript(&degrees, &orientationConfidence, &name, &scriptConfidence);
    m_osd->Clear();
    if (!found)
        return false;
    // Tesseract names the page's turn counter-clockwise; it is undone clockwise.
    turns = orientationConfidence >= 1.5f ? (4 - degrees / 90 % 4) % 4 : 0;
    script = name && scriptConfidence >= 0.5f ? name : "";
    return true;
}

OcrResult TesseractReader::recognise(const ScanImage& image)
{
    OcrResult result;
    tesseract::TessBaseAPI& api = *m_api;
    api.SetPageSegMode(tesseract::PSM_AUTO);
    api.SetImage(image.grey.data(), image.width, image.height, 1, image.width);
    api.SetSourceResolution(static_cast<int>(std::lround(image.zoom * 72)));
    result.read = run(result);
    api.Clear();
    return result;
}

bool TesseractReader::run(OcrResult& result)
{
    tesseract::TessBaseAPI& api = *m_api;
    tesseract::ETEXT_DESC monitor;
    monitor.cancel = cancelled;
    monitor.cancel_this = const_cast<std::atomic<bool>*>(m_stop);
    if (api.Recognize(&monitor) != 0 || cancelled(monitor.cancel_this, 0))
        return false;
    std::unique_ptr<tesseract::ResultIterator> it(api.GetIterator());
    if (!it)
        return true;
    using tesseract::RIL_BLOCK;
    using tesseract::RIL_TEXTLINE;
    using tesseract::RIL_WORD;
    it->Begin();
    tesseract::PolyBlockType type = tesseract::PT_UNKNOWN;
    bool newLine = true;
    do {
        if (it->IsAtBeginningOf(RIL_BLOCK)) {
            type = it->BlockType();
            if (tesseract::PTIsImageType(type)) {
                result.pictures.push_back(boxAt(*it, RIL_BLOCK));
                continue;
            }
            if (tesseract::PTIsLineType(type))
                result.rules.push_back(boxAt(*it, RIL_BLOCK));
        }
        if (!tesseract::PTIsTextType(type) || it->Empty(RIL_WORD))
            continue;
        if (it->IsAtBeginningOf(RIL_TEXTLINE) || newLine) {
            newLine = false;
            OcrLine line;
            line.box = boxAt(*it, RIL_TEXTLINE);
            int x1 = 0;
            int y1 = 0;
            int x2 = 0;
            int y2 = 0;
            if (it->Baseline(RIL_TEXTLINE, &x1, &y1, &x2, &y2)) {
                line.baseX1 = static_cast<float>(x1);
                line.baseY1 = static_cast<float>(y1);
                line.baseX2 = static_cast<float>(x2);
                line.baseY2 = static_cast<float>(y2);
            }
            float descenders = 0;
            float ascenders = 0;
            it->RowAttributes(&line.height, &descenders, &ascenders);
            result.lines.push_back(line);
        }
        std::unique_ptr<char[]> text(it->GetUTF8Text(RIL_WORD));
        if (!text || text[0] == '\0')
            continue;
        OcrWord word;
        word.text = text.get();
        word.confidence = it->Confidence(RIL_WORD);
        word.box = boxAt(*it, RIL_WORD);
        if (word.confidence < ConfidenceFloor && wordLike(word.text))
            word.core = letters(*it);
        word.line = static_cast<int>(result.lines.size()) - 1;
        result.words.push_back(std::move(word));
    } while (it->Next(RIL_WORD));
    return true;
}

void TesseractReader::readLeftovers(const ScanImage& image, OcrResult& result)
{
    // Half an inch square and more; smaller leftovers (a lone page number, a mark) are too
    // little for Tesseract to read reliably, and too little to miss.
    const float scale = image.zoom * 72 / 300;
    const float smallest = 150 * 150 * scale * scale;
    std::vector<PixelBox> clusters = LeftoverInk(image, result, m_stop);
    std::erase_if(clusters, [smallest](const PixelBox& box) {
        return static_cast<float>(box.right - box.left) * static_cast<float>(box.bottom - box.top) <
               smallest;
    });
    if (clusters.empty())
        return;
    tesseract::TessBaseAPI& api = *m_api;
    api.SetImage(image.grey.data(), image.width, image.height, 1, image.width);
    api.SetSourceResolution(static_cast<int>(std::lround(image.zoom * 72)));
    api.SetPageSegMode(tesseract::PSM_SINGLE_BLOCK);
    const int pad = static_cast<int>(12 * scale);
    const auto holdsWords = [&result](const PixelBox& box) {
        return std::any_of(result.words.begin(), result.words.end(), [&box](const OcrWord& word) {
            return word.box.left >= box.left && word.box.right <= box.right &&
                   word.box.top >= box.top && word.box.bottom <= box.bottom;
        });
    };
    for (const PixelBox& cluster : clusters) {
        // A fill or a frame around words already read is drawing, like a ruled line.
        if (holdsWords(cluster)) {
            result.rules.push_back(cluster);
            continue;
        }
        const int left = std::max(0, cluster.left - pad);
        const int top = std::max(0, cluster.top - pad);
        const int right = std::min(image.width, cluster.right + pad);
        const int bottom = std::min(image.height, cluster.bottom + pad);
        api.SetRectangle(left, top, right - left, bottom - top);
        OcrResult found;
        if (!run(found))
            break;
        // Text when confident words fill most of it; otherwise a picture of its own.
        float covered = 0;
        for (const OcrWord& word : found.words) {
            if (word.confidence >= ConfidenceFloor && utf8Length(word.text) >= 2)
                covered += static_cast<float>(word.box.right - word.box.left) *
                           static_cast<float>(word.box.bottom - word.box.top);
        }
        const float area = static_cast<float>(cluster.right - cluster.left) *
                           static_cast<float>(cluster.bottom - cluster.top);
        if (covered < area / 2) {
            result.pictures.push_back(cluster);
            continue;
        }
        const auto lineBase = static_cast<int>(result.lines.size());
        result.lines.insert(result.lines.end(), found.lines.begin(), found.lines.end());
        for (OcrWord& word : found.words) {
            word.line += lineBase;
            result.words.push_back(std::move(word));
        }
    }
    api.Clear();
}

}  // namespace velmora

// The module's entry point, the one symbol it exports.
extern "C" __attribute__((visibility("default"))) velmora::TextReader*
VelmoraCreateTextReader(int interfaceVersion, const velmora::LanguageChoice& languages,
                        const std::atomic<bool>* stop)
{
    if (interfaceVersion != velmora::TextReaderInterfaceVersion)
        return nullptr;
    static_assert(
        std::is_same_v<decltype(&VelmoraCreateTextReader), velmora::CreateTextReaderFunction>);
    try {
        return new velmora::TesseractReader(languages, stop);
    } catch (...) {
        return nullptr;
    }
}
