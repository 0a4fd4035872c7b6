#include "EventsReply.h"

std::string sEventsReply(int nEvents) {
    std::string s = R"({"kind":"calendar#events","etag":"\"p33c9l4t0ra1uo0g\"",)"
                    R"("summary":"user@example.com","updated":"2024-03-01T10:00:00.000Z",)"
                    R"("timeZone":"Europe/Paris","accessRole":"owner",)"
                    R"("defaultReminders":[{"method":"popup","minutes":10}],)"
                    R"("nextSyncToken":"CPDAlvWDx70CEPDAlvWDx70CGAU=","items":[)";
    s.reserve(static_cast<size_t>(nEvents) * 1500 + 512);
    for (int i = 0; i < nEvents; ++i) {
        std::string n = std::to_string(i);
        s += (i ? "," : "");
        s += R"({"kind":"calendar#event","etag":"\"31811617847120)" + n +
             R"(\"","id":"4eahs9ghkhrvkld72hogu9ph3e_)" + n +
             R"(","status":"confirmed","htmlLink":"https://www.google.com/calendar/event?eid=)"
             R"(NGVhaHM5Z2hraHJ2a2xkNzJob2d1OXBoM2VfMjAxNDAzMDFUMDkwMDAwWiB1c2Vy)" +
             n +
             R"(","created":"2024-01-10T09:00:00.000Z","updated":"2024-02-20T14:03:12.356Z",)"
             R"("summary":"R\u00e9union d'\u00e9quipe n\u00b0)" +
             n +
             R"(","description":"Ordre du jour : point d'avancement, budget, questions",)"
             R"("location":"Salle 3, 12 rue de la Paix, Paris",)"
             R"("creator":{"email":"user@example.com","displayName":"User Name","self":true},)"
             R"("organizer":{"email":"user@example.com","displayName":"User Name",)"
             R"("self":true},"start":{"dateTime":"2024-03-01T10:00:00+01:00",)"
             R"("timeZone":"Europe/Paris"},"end":{"dateTime":"2024-03-01T11:00:00+01:00",)"
             R"("timeZone":"Europe/Paris"},"iCalUID":"4eahs9ghkhrvkld72hogu9ph3e_)" +
             n +
             R"(@google.com","sequence":2,"attendees":[{"email":"a@example.com",)"
             R"("responseStatus":"accepted"},{"email":"b@example.com","displayName":"B",)"
             R"("optional":true,"responseStatus":"needsAction"}],)"
             R"("reminders":{"useDefault":true},"eventType":"default","duration":1.5})";
    }
    s += "]}";
    return s;
}

const std::string& rEventsReply() {
    static const std::string s_sText = sEventsReply(2500);
    return s_sText;
}
