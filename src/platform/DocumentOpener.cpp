#include "platform/DocumentOpener.h"

#include "platform/GioOpen.h"

#include <QFile>

namespace {

class GioDocumentOpener final : public DocumentOpener
{
public:
    Result Open(const QString& path) override
    {
        switch (OpenWithAssociatedApplication(QFile::encodeName(path).toStdString())) {
        case OpenResult::Opened:
            return Result::Opened;
        case OpenResult::NoAssociation:
            return Result::NoAssociation;
        case OpenResult::OutOfMemory:
            return Result::OutOfMemory;
        case OpenResult::StartFailed:
            break;
        }
        return Result::StartFailed;
    }
};

}  // namespace

std::unique_ptr<DocumentOpener> CreateDocumentOpener()
{
    return std::make_unique<GioDocumentOpener>();
}
