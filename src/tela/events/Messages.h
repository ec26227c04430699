#pragma once
// Messages: named events (type 0x4001) sent to a handler, by the queue or by
// a direct call; the library's loosely coupled signalling. Any thread may
// send. Sending to a dead handler is defined and silent: false, or eNoTarget.
//
// Every form builds the same event: type 0x4001, `handler` the target,
// `canvas` null, `msg` the name, `sender` as given, the rest at defaults.
// An empty name is a null string or one of length 0; a dead target is one
// that EventHandler::valid(target, IdStamp(0, 0, 0)) refuses, null included.

#include "tela/core/LightweightString.h"
#include "tela/core/Ptr.h"
#include "tela/core/RefCount.h"
#include "tela/events/EventHandler.h"

// Queued. False, with nothing sent, for an empty name or a dead target;
// otherwise true. Without allowDuplicates a message of that name already
// queued for the target is replaced, and the new one goes to the back.
bool sendMessage(const String& name, EventHandler* target, iObject* sender, bool allowDuplicates);
// Queued with a payload, never merged with another; the name is not checked.
// The result is whether the target was alive.
bool sendMessageWithData(const String& name, EventHandler* target, Qv::Ptr<iObject> data, iObject* sender);
// Runs the target's handleEvent now, on this thread, and returns its answer;
// eNoTarget for an empty name or a dead target. The caller must know the
// target cannot die meanwhile: only the queued forms are safe across threads.
EventHandler::eResult callMessage(const String& name, EventHandler* target, iObject* sender);
// As callMessage with a payload and no name check; the result is whether the
// target was alive, never the handler's own answer.
bool callMessageWithData(const String& name, EventHandler* target, Qv::Ptr<iObject> data, iObject* sender);
