#pragma once

/// The codes of refusals at the settings listeners.
namespace Wire::RefusalCode {

constexpr const char* notJson = "not-json";
constexpr const char* notAnObject = "not-an-object";
constexpr const char* tooDeep = "too-deep";
constexpr const char* tooLarge = "too-large";
constexpr const char* unknownType = "unknown-type";
constexpr const char* busy = "busy";
constexpr const char* noMessageId = "no-message-id";
constexpr const char* badBatch = "bad-batch";
constexpr const char* badRequest = "bad-request";
constexpr const char* notHere = "not-here";
constexpr const char* notStored = "not-stored";
constexpr const char* tooManyClients = "too-many-clients";

}  // namespace Wire::RefusalCode
