// CLectureAttributs: the attribute values of one element while a described object reads its
// attributes. Every attribute that lands on one row makes a leaf that looks up the same name;
// the host finds an attribute by a scan, so an element with many attributes on one row would
// cost a scan per attribute. Within the scope, each name is looked up once.
#pragma once
#include <utility>
#include <vector>

class INoeudXML;

class CLectureAttributs {
public:
    explicit CLectureAttributs(INoeudXML* piNoeud);
    ~CLectureAttributs();
    CLectureAttributs(const CLectureAttributs&) = delete;
    CLectureAttributs& operator=(const CLectureAttributs&) = delete;

    // The value of the attribute of that name on the node, through the scope of that node when
    // one is open on this thread.
    static const char* s_pszValeur(INoeudXML* piNoeud, const char* pszNom);

private:
    INoeudXML* m_piNoeud;
    CLectureAttributs* m_pclPrecedente;
    std::vector<std::pair<const char*, const char*>> m_tabValeurs; // name, value
};
