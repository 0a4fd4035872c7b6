// A Calendar events reply as the service writes it, for the benchmarks that read one: nested
// objects, arrays of attendees, dates, links and accented texts, about 1 KB an event.
#pragma once
#include <string>

std::string sEventsReply(int nEvents);
// 2,500 events, the most one reply holds; made once.
const std::string& rEventsReply();
