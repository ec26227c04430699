#include "tela/events/FilterStack.h"

#include "tela/core/NeverDestroyed.h"
#include "tela/events/Event.h"

FilterStack<Event>& getEventInterceptStack(EventInterceptStackPriority priority)
{
    // Never destroyed: filters may still leave them during static shut-down.
    static Qv::NeverDestroyed<FilterStack<Event>> first;
    static Qv::NeverDestroyed<FilterStack<Event>> normal;
    return priority == eInterceptFirst ? *first : *normal;
}

int event_run_intercept_stacks(Event& event)
{
    // Each stack gets its own copy, made after the mark is set and destroyed
    // straight after its run, so a filter that edits its event edits nobody's.
    event.intercepting = true;
    int result = getEventInterceptStack(eInterceptFirst).runOnCopy(event);
    if (result == 0)
        result = getEventInterceptStack(eInterceptNormal).runOnCopy(event);
    event.intercepting = false;
    return result;
}
