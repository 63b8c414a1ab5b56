// libcurl, loaded at its first call instead of at the start of the program: with the twenty-six libraries that it needs
// itself, finding and binding it would take a quarter as long again as an empty window takes to appear. Everything else
// in this folder calls it as usual and is linked with these functions, which pass on what they are given.
#include "platform/FatalError.h"

#include <cstdarg>
#include <curl/curl.h>
#include <dlfcn.h>
#include <string>

#undef curl_easy_getinfo // macros that check arguments
#undef curl_easy_setopt

namespace {

constexpr const char* libraryName = "libcurl.so.4"; // the number of its binary interface since 2006

void* library()
{
    static void* const handle = dlopen(libraryName, RTLD_LAZY | RTLD_LOCAL);
    if (!handle)
        companion::fatalError(std::string(libraryName) + " cannot be loaded: " + dlerror());
    return handle;
}

/// The library's function of that name; `Function` is the one here that stands for it.
template <typename Function> Function* find(const char* name)
{
    void* const address = dlsym(library(), name);
    if (!address)
        companion::fatalError(std::string(libraryName) + " has no " + name);
    return reinterpret_cast<Function*>(address);
}

} // namespace

#define FOUND(name) static const auto found = find<decltype(name)>(#name)

extern "C" {

CURLcode curl_global_init(long flags)
{
    FOUND(curl_global_init);
    return found(flags);
}

CURL* curl_easy_init()
{
    FOUND(curl_easy_init);
    return found();
}

CURLcode curl_easy_setopt(CURL* handle, CURLoption option, ...)
{
    FOUND(curl_easy_setopt);
    va_list arguments;
    va_start(arguments, option);
    CURLcode result = CURLE_OK;
    // An option's number tells the type of its value: CURLOPTTYPE_LONG and so on in curl.h.
    if (option < CURLOPTTYPE_OBJECTPOINT)
        result = found(handle, option, va_arg(arguments, long));
    else if (option >= CURLOPTTYPE_OFF_T && option < CURLOPTTYPE_BLOB)
        result = found(handle, option, va_arg(arguments, curl_off_t));
    else
        result = found(handle, option, va_arg(arguments, void*));
    va_end(arguments);
    return result;
}

CURLcode curl_easy_getinfo(CURL* handle, CURLINFO info, ...)
{
    FOUND(curl_easy_getinfo);
    va_list arguments;
    va_start(arguments, info);
    void* const value = va_arg(arguments, void*);
    va_end(arguments);
    return found(handle, info, value);
}

const char* curl_easy_strerror(CURLcode code)
{
    FOUND(curl_easy_strerror);
    return found(code);
}

void curl_easy_cleanup(CURL* handle)
{
    FOUND(curl_easy_cleanup);
    found(handle);
}

CURLM* curl_multi_init()
{
    FOUND(curl_multi_init);
    return found();
}

CURLMcode curl_multi_add_handle(CURLM* multi, CURL* handle)
{
    FOUND(curl_multi_add_handle);
    return found(multi, handle);
}

CURLMcode curl_multi_remove_handle(CURLM* multi, CURL* handle)
{
    FOUND(curl_multi_remove_handle);
    return found(multi, handle);
}

CURLMcode curl_multi_perform(CURLM* multi, int* running)
{
    FOUND(curl_multi_perform);
    return found(multi, running);
}

CURLMcode curl_multi_poll(
    CURLM* multi, curl_waitfd extra[], unsigned extraCount, int milliseconds, int* ready)
{
    FOUND(curl_multi_poll);
    return found(multi, extra, extraCount, milliseconds, ready);
}

CURLMcode curl_multi_wakeup(CURLM* multi)
{
    FOUND(curl_multi_wakeup);
    return found(multi);
}

CURLMsg* curl_multi_info_read(CURLM* multi, int* left)
{
    FOUND(curl_multi_info_read);
    return found(multi, left);
}

CURLMcode curl_multi_cleanup(CURLM* multi)
{
    FOUND(curl_multi_cleanup);
    return found(multi);
}

const char* curl_multi_strerror(CURLMcode code)
{
    FOUND(curl_multi_strerror);
    return found(code);
}

curl_slist* curl_slist_append(curl_slist* list, const char* text)
{
    FOUND(curl_slist_append);
    return found(list, text);
}

void curl_slist_free_all(curl_slist* list)
{
    FOUND(curl_slist_free_all);
    found(list);
}

CURLU* curl_url()
{
    FOUND(curl_url);
    return found();
}

CURLUcode curl_url_set(CURLU* url, CURLUPart part, const char* text, unsigned flags)
{
    FOUND(curl_url_set);
    return found(url, part, text, flags);
}

void curl_url_cleanup(CURLU* url)
{
    FOUND(curl_url_cleanup);
    found(url);
}

} // extern "C"
