#include "PageCount.h"

#include "pdf/PdfSession.h"

#include <exception>
#include <string>
#include <vector>

namespace {

constexpr int32_t PasswordNeeded = -3;
constexpr int32_t CannotOpen = -1;
// Counting pages needs far less than a conversion; a smaller ceiling fails bombs sooner.
constexpr std::size_t MemoryLimit = std::size_t{256} << 20;

}  // namespace

// The exported signature is the library's published C interface, so its pointers stay non-const.
// NOLINTNEXTLINE(readability-non-const-parameter)
extern "C" int32_t GetPageCount(char* pdfPath, char* password)
{
    if (!pdfPath || !*pdfPath)
        return CannotOpen;
    try {
        velmora::PdfSession pdf(MemoryLimit);
        std::vector<std::string> passwords;
        if (password)
            passwords.emplace_back(password);
        switch (pdf.open(pdfPath, passwords)) {
        case velmora::OpenStatus::NeedsPassword:
            return PasswordNeeded;
        case velmora::OpenStatus::Failed:
            return CannotOpen;
        case velmora::OpenStatus::Opened:
            break;
        }
        const int count = pdf.pageCount();
        return count < 0 ? CannotOpen : count;
    } catch (const std::exception&) {
        return CannotOpen;
    }
}
