#pragma once
// NotifyMsgTypeDictionary: gives each notification name a stable integer id,
// the same for every caller in the process. One id is reserved for "all
// types": a listener registered with it hears every notification.

namespace NotifyMsgTypeDictionary {

struct Dictionary {
    const int allTypesId;
    int intern(const char* name); // thread-safe; the same name gives the same id
};

Dictionary& instance();

inline int intern(const char* name)
{
    return instance().intern(name);
}

} // namespace NotifyMsgTypeDictionary
