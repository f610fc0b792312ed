#include "dialogs/Forms.h"

#include "dialogs/ConversionMethodForm.h"
#include "dialogs/DocumentTypeForm.h"
#include "dialogs/OtherOptionsForm.h"
#include "dialogs/WelcomeForm.h"

Forms::Forms(DialogRuntime& runtime, AppContext& context, ConversionController& controller)
    : m_runtime(runtime), m_context(context), m_controller(controller)
{
}

WelcomeForm& Forms::Welcome()
{
    return m_runtime.Instance(m_welcome, *this, m_controller);
}

DocumentTypeForm& Forms::DocumentType()
{
    return m_runtime.Instance(m_documentType, *this);
}

ConversionMethodForm& Forms::ConversionMethod()
{
    return m_runtime.Instance(m_conversionMethod, *this);
}

OtherOptionsForm& Forms::OtherOptions()
{
    return m_runtime.Instance(m_otherOptions, *this);
}
