// CGestionMarqueurs: the markers of the map parameters, the collection behind the accessor
// Marqueur, and their query text, one group per style.
#pragma once
#include "maps/CollectionCarte.h"
#include "maps/GoogleMarqueur.h"

#include "TString.h"

class CGestionMarqueurs final
    : public CImplInterfaceAddRefRelease<CTCollectionCarte<CGoogleMarqueur>> {
public:
    // "markers=<style>|<coordinates>|<coordinates>..." for each style, in the order of the first
    // marker of each, the groups joined by "&"; empty without markers. Valid until the next
    // call.
    operator const wchar_t*();

private:
    CTString m_sTexte;
};
