#include "ocr/TesseractReader.h"

#include <tesseract/baseapi.h>
#include <tesseract/ocrclass.h>
#include <tesseract/resultiterator.h>

#include <algorithm>
#include <cctype>
#include <mutex>

namespace velmora {

namespace {

// Tesseract's set-up reads shared tables; one engine starts at a time.
std::mutex g_startLock;

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

TesseractReader::TesseractReader(LanguageChoice languages, const std::atomic<bool>* stop)
    : m_choice(std::move(languages)), m_stop(stop)
{
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
    ScanImage clean{image.width, image.height, image.zoom, image.withoutSpecks(), {}};
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
        if (!language.empty() && (base + "+").find(language + "+") == std::string::npos &&
            load(language + "+" + base)) {
            OcrResult other = recognise(clean);
            other.turns = best.turns;
            if (better(other, best)) {
                best = std::move(other);
                m_scriptLanguage = language;
            }
        }
    }
    reconsider(clean, best);
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
    api.SetSourceResolution(static_cast<int>(image.zoom * 72 + 0.5f));
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
        api.SetRectangle(left, top, right - left, bottom - top);
        tesseract::ETEXT_DESC monitor;
        monitor.cancel = cancelled;
        monitor.cancel_this = const_cast<std::atomic<bool>*>(m_stop);
        if (api.Recognize(&monitor) != 0)
            break;
        std::unique_ptr<char[]> text(api.GetUTF8Text());
        const float confidence = static_cast<float>(api.MeanTextConf());
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
    m_osd->SetSourceResolution(static_cast<int>(image.zoom * 72 + 0.5f));
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
    api.SetSourceResolution(static_cast<int>(image.zoom * 72 + 0.5f));
    tesseract::ETEXT_DESC monitor;
    monitor.cancel = cancelled;
    monitor.cancel_this = const_cast<std::atomic<bool>*>(m_stop);
    if (api.Recognize(&monitor) != 0 || cancelled(monitor.cancel_this, 0)) {
        api.Clear();
        return result;
    }
    std::unique_ptr<tesseract::ResultIterator> it(api.GetIterator());
    if (!it) {
        api.Clear();
        result.read = true;
        return result;
    }
    using tesseract::RIL_BLOCK;
    using tesseract::RIL_TEXTLINE;
    using tesseract::RIL_WORD;
    it->Begin();
    tesseract::PolyBlockType type = tesseract::PT_UNKNOWN;
    do {
        if (it->IsAtBeginningOf(RIL_BLOCK)) {
            type = it->BlockType();
            if (tesseract::PTIsImageType(type)) {
                result.pictures.push_back(boxAt(*it, RIL_BLOCK));
                continue;
            }
        }
        if (!tesseract::PTIsTextType(type) || it->Empty(RIL_WORD))
            continue;
        if (it->IsAtBeginningOf(RIL_TEXTLINE) || result.lines.empty()) {
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
        if (!text || !*text.get())
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
    it.reset();
    api.Clear();
    result.read = true;
    return result;
}

}  // namespace velmora
