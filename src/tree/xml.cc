#include "tree/xml.h"

#include <kalv/status.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <iconv.h>
#include <string_view>
#include <utility>

namespace kh {

ParserCall::ParserCall() noexcept
    : generic_(xmlGenericError), generic_context_(xmlGenericErrorContext), structured_(xmlStructuredError),
      structured_context_(xmlStructuredErrorContext), generic_before_(generic_),
      generic_context_before_(generic_context_), structured_before_(structured_),
      structured_context_before_(structured_context_)
{
    errno = 0;
    fatal_message_[0] = '\0';
    xmlResetLastError();
    generic_ = take_message;
    generic_context_ = this;
    structured_ = nullptr;
    structured_context_ = nullptr;
}

ParserCall::~ParserCall()
{
    generic_ = generic_before_;
    generic_context_ = generic_context_before_;
    structured_ = structured_before_;
    structured_context_ = structured_context_before_;
}

static bool last_error_is_memory() noexcept
{
    const xmlError* error = xmlGetLastError();
    return error && error->code == XML_ERR_NO_MEMORY;
}

bool ParserCall::out_of_memory() const noexcept
{
    // Not every failed allocation of libxml2's becomes one of its errors, but malloc tells of each in errno.
    return out_of_memory_ || errno == ENOMEM || last_error_is_memory();
}

static void describe_fatal_error(const xmlError* error, char* text, std::size_t size) noexcept
{
    if (!error || error->level != XML_ERR_FATAL || !error->message)
        return;
    const std::size_t length = std::string_view(error->message).find_last_not_of('\n') + 1;
    std::snprintf(text, size, "%d:%d: %.*s", error->line, error->int2, static_cast<int>(length),
                  error->message);
}

void ParserCall::take_message(void* self, const char* format, ...)
{
    auto* call = static_cast<ParserCall*>(self);
    call->note_failures(); // a later message would hide that memory ran out
    if (call->fatal_message_[0] == '\0')
        describe_fatal_error(xmlGetLastError(), call->fatal_message_, sizeof call->fatal_message_);
    char text[1024];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    KH_handle_xml_error(nullptr, "%s", text);
}

void NodeCall::take_error(void*, xmlError* error)
{
    const int reason = errno; // which out_of_memory() looks at
    KH_handle_xml_error(nullptr, "%s", error->message);
    errno = reason;
}

/// libxml2 does not close a converter that has no name, as one is left when memory runs out over it.
void FreeXml::operator()(xmlCharEncodingHandler* encoder) const noexcept
{
    if (encoder->name) {
        xmlCharEncCloseFunc(encoder);
        return;
    }
    for (iconv_t conversion : {encoder->iconv_in, encoder->iconv_out}) {
        if (conversion)
            iconv_close(conversion);
    }
    xmlFree(encoder);
}

xmlNs* search_namespace(xmlNode* element, const xmlChar* prefix) noexcept
{
    xmlNs* space = xmlSearchNs(element->doc, element, prefix);
    xmlNs*& shared = element->doc->oldNs;
    if (!space || space != shared || (space->href && space->prefix))
        return space;
    // The namespace of "xml", which libxml2 makes when it is first asked for, and would keep by half.
    const int error = errno;
    xmlFreeNs(std::exchange(shared, nullptr));
    errno = error;
    return nullptr;
}

} // namespace kh
