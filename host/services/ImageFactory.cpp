#include "ImageFactory.h"

#include "HostBarrier.h"
#include "DataServiceErrors.h"
#include "Image.h"
#include "Utf8.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

CImageFactory::CImageFactory(size_t nMaxSize) : m_nMaxSize(nMaxSize) {}
CImageFactory::~CImageFactory() = default;

IImage* CImageFactory::vpiCreeImage(const void* pOctets, size_t nTaille,
                                    const wchar_t* pszNomFichier, CXError* pclErreur) {
    return KVHost::Guard(pclErreur, static_cast<IImage*>(nullptr), [&]() -> IImage* {
        if (!pOctets || nTaille == 0) {
            KVDataService::Fail(pclErreur, DATASERVICE_IMAGE_ARGUMENT,
                                L"An image needs bytes; none were given.");
            return nullptr;
        }
        if (nTaille > m_nMaxSize) {
            KVDataService::Fail(pclErreur, DATASERVICE_IMAGE_TOO_LARGE,
                                L"The image is " + std::to_wstring(nTaille) +
                                    L" bytes long, more than the limit of " +
                                    std::to_wstring(m_nMaxSize) + L" bytes.");
            return nullptr;
        }
        const uint8_t* p = static_cast<const uint8_t*>(pOctets);
        std::vector<uint8_t> tabBytes;
        try {
            tabBytes.assign(p, p + nTaille);
        } catch (const std::bad_alloc&) {
            if (pclErreur)
                pclErreur->SetErrorNoMemory();
            return nullptr;
        }
        return new CImage(std::move(tabBytes), pszNomFichier);
    });
}

IImage* CImageFactory::vpiChargeImage(const wchar_t* pszChemin, CXError* pclErreur) {
    return KVHost::Guard(pclErreur, static_cast<IImage*>(nullptr), [&]() -> IImage* {
        if (!pszChemin || !*pszChemin) {
            KVDataService::Fail(pclErreur, DATASERVICE_IMAGE_ARGUMENT,
                                L"An image file needs a path; none was given.");
            return nullptr;
        }
        std::string sPath = KVUtf8::VersUtf8(pszChemin);
        auto fail = [&](int nErrno) {
            KVDataService::Fail(pclErreur, DATASERVICE_IMAGE_READ,
                                L"The image file \"" + std::wstring(pszChemin) +
                                    L"\" cannot be read: " +
                                    KVUtf8::VersWide(std::strerror(nErrno)) + L".");
            return nullptr;
        };
        int nFile = open(sPath.c_str(), O_RDONLY | O_CLOEXEC);
        if (nFile < 0)
            return fail(errno);
        struct stat st {};
        if (fstat(nFile, &st) != 0) {
            int nErrno = errno;
            close(nFile);
            return fail(nErrno);
        }
        if (!S_ISREG(st.st_mode)) {
            close(nFile);
            return fail(S_ISDIR(st.st_mode) ? EISDIR : EINVAL);
        }
        if (static_cast<uint64_t>(st.st_size) > m_nMaxSize) {
            close(nFile);
            KVDataService::Fail(pclErreur, DATASERVICE_IMAGE_TOO_LARGE,
                                L"The image file \"" + std::wstring(pszChemin) + L"\" is " +
                                    std::to_wstring(st.st_size) +
                                    L" bytes long, more than the limit of " +
                                    std::to_wstring(m_nMaxSize) + L" bytes.");
            return nullptr;
        }
        std::vector<uint8_t> tabBytes;
        try {
            tabBytes.resize(static_cast<size_t>(st.st_size));
        } catch (const std::bad_alloc&) {
            close(nFile);
            if (pclErreur)
                pclErreur->SetErrorNoMemory();
            return nullptr;
        }
        size_t nRead = 0;
        while (nRead < tabBytes.size()) {
            ssize_t n = read(nFile, tabBytes.data() + nRead, tabBytes.size() - nRead);
            if (n < 0 && errno == EINTR)
                continue;
            if (n < 0) {
                int nErrno = errno;
                close(nFile);
                return fail(nErrno);
            }
            if (n == 0)
                break; // the file shrank meanwhile: what is there is the image
            nRead += static_cast<size_t>(n);
        }
        close(nFile);
        tabBytes.resize(nRead);
        if (tabBytes.empty()) {
            KVDataService::Fail(pclErreur, DATASERVICE_IMAGE_ARGUMENT,
                                L"The image file \"" + std::wstring(pszChemin) + L"\" is empty.");
            return nullptr;
        }
        return new CImage(std::move(tabBytes), pszChemin);
    });
}
