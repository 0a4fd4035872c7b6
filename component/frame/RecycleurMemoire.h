// A free list of fixed-size blocks. Every recycler of the process is chained, so that the
// execution object can give all their memory back when the host lets the component go.
#pragma once
#include <cstddef>

class CRecycleurMemoire {
public:
    explicit CRecycleurMemoire(size_t nTailleBloc);
    ~CRecycleurMemoire();
    CRecycleurMemoire(const CRecycleurMemoire&) = delete;
    CRecycleurMemoire& operator=(const CRecycleurMemoire&) = delete;

    void* pAlloue();
    void Recycle(void* p);
    // Frees every chained free block.
    void Vide();
    size_t nGetNbBlocLibre() const { return m_nNbBloc; }

    static CRecycleurMemoire* ms_pclListeRecycleur;
    static void s_VideTout();

private:
    struct STBloc {
        STBloc* pSuivant;
    };
    size_t m_nTailleBloc;
    STBloc* m_pstLibre = nullptr;
    size_t m_nNbBloc = 0;
    CRecycleurMemoire* m_pclSuivant = nullptr;
};
