#include "platform/PdfAccessLibrary.h"

#include <QByteArray>

#include <dlfcn.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace {

using GetPageCountFunction = int32_t (*)(char*, char*);

// A text as a writable, zero-terminated buffer in the system's code page.
std::vector<char> WritableBuffer(const QString& text)
{
    const QByteArray bytes = text.toLocal8Bit();
    std::vector<char> buffer(static_cast<size_t>(bytes.size()) + 1, '\0');
    std::memcpy(buffer.data(), bytes.constData(), static_cast<size_t>(bytes.size()));
    return buffer;
}

class SharedPdfAccessLibrary final : public PdfAccessLibrary
{
public:
    std::optional<qint32> GetPageCount(QString& pdfPath, QString& password) override
    {
        // Bound by its relative name: the caller has set the working directory.
        void* handle = dlopen("./liblomerdoc.so", RTLD_NOW | RTLD_LOCAL);
        if (!handle)
            return std::nullopt;
        auto function = reinterpret_cast<GetPageCountFunction>(dlsym(handle, "GetPageCount"));
        if (!function) {
            dlclose(handle);
            return std::nullopt;
        }
        std::vector<char> pathBuffer = WritableBuffer(pdfPath);
        std::vector<char> passwordBuffer = WritableBuffer(password);
        const qint32 result = function(pathBuffer.data(), passwordBuffer.data());
        pdfPath = QString::fromLocal8Bit(pathBuffer.data());
        password = QString::fromLocal8Bit(passwordBuffer.data());
        dlclose(handle);
        return result;
    }
};

}  // namespace

std::unique_ptr<PdfAccessLibrary> CreatePdfAccessLibrary()
{
    return std::make_unique<SharedPdfAccessLibrary>();
}
