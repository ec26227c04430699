#include "tela/core/Resources.h"

#include <map>
#include <mutex>

namespace {

struct ResourceTable {
    std::mutex lock;
    std::map<ResId, WString> strings;
};

ResourceTable& table()
{
    static ResourceTable resources;   // the one table the application fills
    return resources;
}

} // namespace

void setResourceString(ResId id, const WString& text)
{
    ResourceTable& resources = table();
    const std::lock_guard<std::mutex> hold(resources.lock);
    resources.strings[id] = text;
}

void clearResourceStrings()
{
    ResourceTable& resources = table();
    const std::lock_guard<std::mutex> hold(resources.lock);
    resources.strings.clear();
}

WString resourceStrW(ResId id, ResStrFmt format)
{
    WString text;
    {
        ResourceTable& resources = table();
        const std::lock_guard<std::mutex> hold(resources.lock);
        const auto found = resources.strings.find(id);
        if (found == resources.strings.end())
            return WString(u"");
        text = found->second;
    }
    if (format == RESOURCE_FIRST_LINE) {
        const std::size_t newline = text.view().find(u'\n');
        if (newline != WString::view_type::npos)
            return text.substr(0, newline);
    }
    return text;
}

void resolveUIString(UIString& string)
{
    if (!string.text.empty() || string.resourceId == UIString::NO_RESOURCE)
        return;
    string.text = resourceStrW(string.resourceId, string.format);
    if (string.flags & UIString::APPEND_ELLIPSIS)
        string.text += WString(u"..");
}
