// CDateTimeRFC822: the date of HTTP headers and some feeds, "Tue, 15 Nov 1994 08:12:31 GMT".
#pragma once
#include "DateTime.h"
#include "TString.h"

class CDateTimeRFC822 : public CDateTime {
public:
    struct STZone {
        const wchar_t* pszNom;
        int nHeures;
    };
    static const wchar_t* const ms_tabRFC822_Mois[12];
    static const STZone ms_tabRFC822_ZoneOffset[40];

    // 0 on success, 110 when the text gives fewer than six parts. The zone's offset is added to
    // the time as written: "+0200" moves it two hours forward.
    int nVersDate_RFC822(const wchar_t* pszTexte);
    // "15 Nov 1994 08:12:31 Z": no day name, and always "Z".
    int nVersChaine_RFC822(CTString& sSortie) const;
};
