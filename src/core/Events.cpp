#include "core/Events.h"

#include <QCoreApplication>

void PumpEvents()
{
    if (QCoreApplication::instance())
        QCoreApplication::processEvents(QEventLoop::AllEvents);
}
