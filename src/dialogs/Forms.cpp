#include "dialogs/Forms.h"

#include "dialogs/ConversionMethodForm.h"
#include "dialogs/DocumentTypeForm.h"
#include "dialogs/OtherOptionsForm.h"
#include "dialogs/WelcomeForm.h"

Forms::Forms(DialogRuntime& runtime, AppContext& context, ConvertFlow& flow)
    : m_runtime(runtime), m_context(context), m_flow(flow)
{
}

WelcomeForm& Forms::Welcome()
{
    return m_runtime.Instance(m_welcome, *this, m_flow);
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
