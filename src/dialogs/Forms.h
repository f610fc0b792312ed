#pragma once

// The single instances of the main dialog and the three option pages, each made on first use.

#include "dialogs/DialogRuntime.h"

#include <QPointer>

struct AppContext;
class ConversionController;
class WelcomeForm;
class DocumentTypeForm;
class ConversionMethodForm;
class OtherOptionsForm;

class Forms final
{
public:
    Forms(DialogRuntime& runtime, AppContext& context, ConversionController& controller);

    DialogRuntime& Runtime() const { return m_runtime; }
    AppContext& Context() const { return m_context; }

    WelcomeForm& Welcome();
    DocumentTypeForm& DocumentType();
    ConversionMethodForm& ConversionMethod();
    OtherOptionsForm& OtherOptions();

private:
    DialogRuntime& m_runtime;
    AppContext& m_context;
    ConversionController& m_controller;
    QPointer<WelcomeForm> m_welcome;
    QPointer<DocumentTypeForm> m_documentType;
    QPointer<ConversionMethodForm> m_conversionMethod;
    QPointer<OtherOptionsForm> m_otherOptions;
};
