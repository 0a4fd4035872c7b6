// The rows of the script vocabulary, written once and expanded many times.
//
// The vocabulary lives in .def files: frame/Functions.def, frame/Constants.def,
// frame/TypeRefs.def, and one <Class>.def beside each script-visible class, listed in table
// order by frame/Classes.def. A consumer defines the row macros it cares about, includes the
// .def, and the .def fills the others with empty defaults and #undefs them all at its end.
// Frame/Tables.cpp turns the rows into the binary tables of abi/Tables.h, frame/KllStubs.h
// turns a class's rows into its stubs, tools/PackNames.cpp turns them into the name block.
//
// Class rows (a class .def; order matters: identifiers and table positions follow it)
//
//   KLL_CLASS(Class, Number, "scriptType", Family)
//       Class        the C++ class; its handlers are KLL_<Class>_C, _T, _GOG, _RAZ
//       Number       the class number in the host's space, in the type string
//                    "+:060:<Number>:GGL:<scriptType>"
//       scriptType   the script's name of the type, accented letters written plainly
//       Family       GOOGLE, MAP, SALESFORCE, SFPRODUCT, FACEBOOK, OAUTH: the class flags,
//                    which the class's property and accessor rows carry too
//   KLL_CONSTRUCTOR(Class, k)
//       constructor syntax k, handler KLL_<Class>_C_<k>; k counts from 0
//   KLL_PROPERTY(Class, Prop, Type, Access)
//       Prop         the handlers' name: KLL_<Class>_G_<Prop>, _S_<Prop>, _FS_<Prop>; it is
//                    the script name too
//       Type         a type token, below
//       Access       RW    read and write: getter and setter
//                    R     read only: getter alone
//                    RF    read only to scripts: getter and forced setter, which the host
//                          uses to rebuild an object
//                    RW_COMPAT, R_COMPAT, RF_COMPAT: the same, on a row kept for
//                          compatibility (bit 0 of the row's flags)
//   KLL_PROPERTY_AS(Class, Prop, Type, Access, "ScriptName")
//       a property whose script name is not its handlers' name
//   KLL_ACCESSOR(Class, Name, TypeRef, Mode)
//       a collection, handler KLL_<Class>_A_<Name>; TypeRef a type reference token (NONE
//       when the elements have no one type); Mode CURRENT, or COMPAT on a row kept for
//       compatibility
//   KLL_CLASS_END(Class)
//       closes the class; every class .def ends with it
//
// Function rows (frame/Functions.def; order matters: the table is in function-number order)
//
//   KLL_FUNCTION(Number, Function, Family)
//       a function and its syntax table gst<Function>60, the syntax rows that follow;
//       name index Number - 1; Family the function flags, below
//   KLL_FUNCTION_AGAIN(Number, Function, Family)
//       a second registration of a function already listed: same syntax table, same name
//       index, its own flags; no syntax rows
//   KLL_SYNTAX(Class, Function, k, Result, Parameter...)
//       syntax k, served by the object of its first parameter, handler
//       KLL_<Class>_M_<Function>_S<k>; Result and Parameters are signature tokens, below,
//       the served object included
//   KLL_SYNTAX_FREE(Function, k, Result, Parameter...)
//       syntax k of a free function, handler KLL_<Function>_<k>
//   KLL_SYNTAX_NONE(Function, k, Result, Parameter...)
//       a syntax registered without a handler: the host finds a null pointer
//   KLL_SYNTAX_UNFILLED(Class, Function, k, nParameters, Parameter...)
//       a syntax with a handler and no signature (an empty item list): it returns nothing,
//       and reads nParameters values, the served object included; the Parameter tokens are
//       not registered, they only tell the generated stub how to read them
//   KLL_FUNCTION_END(Function)
//
// Constant rows (frame/Constants.def; order matters: constant-number order)
//
//   KLL_CONSTANT_INT(Number, Name, Value)       a 32-bit integer, type word 0x83C
//   KLL_CONSTANT_TEXT(Number, Name, "Value")    a wide text, type word 0x7A3C
//
// Type reference rows (frame/TypeRefs.def; order matters: the position is the 1-based index
// that signatures and object types carry)
//
//   KLL_TYPEREF(Token, Number, "scriptType")
//       Token is the script name with its accents taken off, for use in other rows
//
// Type tokens (property types; the value is the type word of the row):
//   TEXT 122, STRING 16, BOOLEAN 1, INT 8, INT64 9, REAL 12, DATETIME 26, BINARY 28,
//   IMAGE 30, ARRAY 112, CHAR 17, OBJECT(TypeRef) 111 | index << 16
//
// Signature tokens (4 bytes each: 16-bit code, 16-bit qualifier, little-endian):
//   BOOLEAN 1, INT 8, INT_P 0x8008 (int*), BUFFER 19, STRING 130, TEXT 122,
//   TEXT_P 0x807A (text*), DATETIME 26, DATETIME_P 0x801A (datetime*), BINARY 28, IMAGE 30,
//   ANY 31, STRINGARRAY 58, STRINGORBUFFER 80, ARRAY 112, OBJ(TypeRef) 111 with the index
#pragma once
#include "AnyTypes.h"

#include <cstdint>

// The library number that ends every table name and stands in every descriptor word.
inline constexpr unsigned knKllLibrairie = 60;

// Type reference indices, 1-based; 0 names no type.
enum eKLLTYPEREF : unsigned {
    KLL_TR_NONE = 0,
#define KLL_TYPEREF(Token, nNumero, pszNom) KLL_TR_##Token,
#include "frame/TypeRefs.def"
    KLL_TR_FIN
};
inline constexpr unsigned knKllNbTypeRef = KLL_TR_FIN - 1;

// Type tokens: the type word of a property row.
#define KLL_TYPE_TEXT                                                                              \
    unsigned {                                                                                     \
        KVTYPE_TEXT                                                                                \
    }
#define KLL_TYPE_STRING                                                                            \
    unsigned {                                                                                     \
        KVTYPE_KLDSTRW                                                                             \
    }
#define KLL_TYPE_BOOLEAN                                                                           \
    unsigned {                                                                                     \
        KVTYPE_KLBOOL                                                                              \
    }
#define KLL_TYPE_INT                                                                               \
    unsigned {                                                                                     \
        KVTYPE_KLI4                                                                                \
    }
#define KLL_TYPE_INT64                                                                             \
    unsigned {                                                                                     \
        KVTYPE_KLI8                                                                                \
    }
#define KLL_TYPE_REAL                                                                              \
    unsigned {                                                                                     \
        KVTYPE_KLR8                                                                                \
    }
#define KLL_TYPE_DATETIME                                                                          \
    unsigned {                                                                                     \
        KVTYPE_KLDATETIME                                                                          \
    }
#define KLL_TYPE_BINARY                                                                            \
    unsigned {                                                                                     \
        KVTYPE_KLBIN                                                                               \
    }
#define KLL_TYPE_IMAGE                                                                             \
    unsigned {                                                                                     \
        KVTYPE_KLMEMOIMG                                                                           \
    }
#define KLL_TYPE_ARRAY                                                                             \
    unsigned {                                                                                     \
        KVTYPE_ARRAY                                                                               \
    }
#define KLL_TYPE_CHAR                                                                              \
    unsigned {                                                                                     \
        KVTYPE_KLCARA                                                                              \
    }
#define KLL_TYPE_OBJECT(tr) (unsigned{KVTYPE_KLDINO} | (static_cast<unsigned>(KLL_TR_##tr) << 16))
// Whether a type token names an object: objects have their getter in the second slot.
#define KLL_OBJ_TEXT 0
#define KLL_OBJ_STRING 0
#define KLL_OBJ_BOOLEAN 0
#define KLL_OBJ_INT 0
#define KLL_OBJ_INT64 0
#define KLL_OBJ_REAL 0
#define KLL_OBJ_DATETIME 0
#define KLL_OBJ_BINARY 0
#define KLL_OBJ_IMAGE 0
#define KLL_OBJ_ARRAY 0
#define KLL_OBJ_CHAR 0
#define KLL_OBJ_OBJECT(tr) 1

// One signature item: a 16-bit code and a 16-bit qualifier, little-endian.
#define KLL_SIG(code, qual)                                                                        \
    static_cast<unsigned char>((code)&0xFF), static_cast<unsigned char>(((code) >> 8) & 0xFF),     \
        static_cast<unsigned char>((qual)&0xFF), static_cast<unsigned char>(((qual) >> 8) & 0xFF)
#define KLL_SIG_BOOLEAN KLL_SIG(KVTYPE_KLBOOL, 0)
#define KLL_SIG_INT KLL_SIG(KVTYPE_KLI4, 0)
#define KLL_SIG_INT_P KLL_SIG(knKVTypeStarred | KVTYPE_KLI4, 0)
#define KLL_SIG_BUFFER KLL_SIG(KVTYPE_KLDSTRA, 0)
#define KLL_SIG_STRING KLL_SIG(KVTYPE_STRING, 0)
#define KLL_SIG_TEXT KLL_SIG(KVTYPE_TEXT, 0)
#define KLL_SIG_TEXT_P KLL_SIG(knKVTypeStarred | KVTYPE_TEXT, 0)
#define KLL_SIG_DATETIME KLL_SIG(KVTYPE_KLDATETIME, 0)
#define KLL_SIG_DATETIME_P KLL_SIG(knKVTypeStarred | KVTYPE_KLDATETIME, 0)
#define KLL_SIG_BINARY KLL_SIG(KVTYPE_KLBIN, 0)
#define KLL_SIG_IMAGE KLL_SIG(KVTYPE_KLMEMOIMG, 0)
#define KLL_SIG_ANY KLL_SIG(KVTYPE_ANY, 0)
#define KLL_SIG_STRINGARRAY KLL_SIG(KVTYPE_STRINGARRAY, 0)
#define KLL_SIG_STRINGORBUFFER KLL_SIG(KVTYPE_STRINGORBUFFER, 0)
#define KLL_SIG_ARRAY KLL_SIG(KVTYPE_ARRAY, 0)
#define KLL_SIG_OBJ(tr) KLL_SIG(KVTYPE_KLDINO, KLL_TR_##tr)

// Access tokens: which handlers a property row has, and its compatibility bit.
#define KLL_HAS_SETTER_RW 1
#define KLL_HAS_SETTER_R 0
#define KLL_HAS_SETTER_RF 0
#define KLL_HAS_SETTER_RW_COMPAT 1
#define KLL_HAS_SETTER_R_COMPAT 0
#define KLL_HAS_SETTER_RF_COMPAT 0
#define KLL_HAS_FORCED_RW 0
#define KLL_HAS_FORCED_R 0
#define KLL_HAS_FORCED_RF 1
#define KLL_HAS_FORCED_RW_COMPAT 0
#define KLL_HAS_FORCED_R_COMPAT 0
#define KLL_HAS_FORCED_RF_COMPAT 1
#define KLL_COMPAT_RW 0
#define KLL_COMPAT_R 0
#define KLL_COMPAT_RF 0
#define KLL_COMPAT_RW_COMPAT 1
#define KLL_COMPAT_R_COMPAT 1
#define KLL_COMPAT_RF_COMPAT 1
#define KLL_COMPAT_CURRENT 0
#define KLL_COMPAT_COMPAT 1

// The three ways a property's setter slots are filled, by access: the macro named
// KLL_<what>_<Access>(a, b) gives `a` when the row has that handler and `b` otherwise.
#define KLL_IF_SETTER_RW(a, b) a
#define KLL_IF_SETTER_R(a, b) b
#define KLL_IF_SETTER_RF(a, b) b
#define KLL_IF_SETTER_RW_COMPAT(a, b) a
#define KLL_IF_SETTER_R_COMPAT(a, b) b
#define KLL_IF_SETTER_RF_COMPAT(a, b) b
#define KLL_IF_FORCED_RW(a, b) b
#define KLL_IF_FORCED_R(a, b) b
#define KLL_IF_FORCED_RF(a, b) a
#define KLL_IF_FORCED_RW_COMPAT(a, b) b
#define KLL_IF_FORCED_R_COMPAT(a, b) b
#define KLL_IF_FORCED_RF_COMPAT(a, b) a

// Family tokens: flags of the classes and of their property and accessor rows.
#define KLL_CF_GOOGLE 0x81EB202410ull
#define KLL_CF_MAP 0x8069202410ull
#define KLL_CF_SALESFORCE 0x81E9200010ull
#define KLL_CF_SFPRODUCT 0x81E9200011ull
#define KLL_CF_FACEBOOK 0x8069200290ull
#define KLL_CF_OAUTH 0x806B200010ull

// Family tokens: flags of the function rows. The host gives them their meaning.
#define KLL_FF_GOOGLE 0x81C322A400ull
#define KLL_FF_CONNECT 0xC1C323A400ull
#define KLL_FF_DISCONNECT 0x81C323A400ull
#define KLL_FF_MAP 0x81C122A400ull
#define KLL_FF_DOCUMENT 0x81C322A600ull
#define KLL_FF_TOXML 0x81C322A481ull
#define KLL_FF_ADWORDS 0x81C322A482ull
#define KLL_FF_SECOND 0x81C3A2A401ull
#define KLL_FF_SALESFORCE 0x81C1228400ull
#define KLL_FF_SFPRODUCTS 0x81C1228401ull
#define KLL_FF_FACEBOOK 0x81C123A200ull
#define KLL_FF_AUTH 0x81C323A000ull

// Options of property and accessor rows. A plain value with a setter or a forced setter takes
// part in the host's save and rebuild; a plain read-only value is left out of it.
inline constexpr uint64_t KLL_OPT_VALEUR = 0x202;
inline constexpr uint64_t KLL_OPT_VALEUR_LECTURE = 0x2;
inline constexpr uint64_t KLL_OPT_OBJET_LECTURE = 0x402;
inline constexpr uint64_t KLL_OPT_OBJET = 0x602;
inline constexpr uint64_t KLL_OPT_ACCESSEUR = 0x20204;
inline constexpr uint64_t KLL_OPT_ACCESSEUR_COMPAT = 0x204;
#define KLL_OPTION_PROPRIETE(T, A)                                                                 \
    (KLL_OBJ_##T                                                                                   \
         ? (KLL_HAS_SETTER_##A ? KLL_OPT_OBJET : KLL_OPT_OBJET_LECTURE)                            \
         : (KLL_HAS_SETTER_##A || KLL_HAS_FORCED_##A ? KLL_OPT_VALEUR : KLL_OPT_VALEUR_LECTURE))
#define KLL_OPTION_ACCESSEUR(M) (KLL_COMPAT_##M ? KLL_OPT_ACCESSEUR_COMPAT : KLL_OPT_ACCESSEUR)

// Kind of call in a syntax row's option word (the byte above the parameter count).
inline constexpr uint64_t KLL_OPT_LIBRE = 0x000;
inline constexpr uint64_t KLL_OPT_METHODE = 0x100;
inline constexpr uint64_t KLL_OPT_CONSTRUCTEUR = 0x200;

// The hash of a script name in property and accessor rows: djb2 (h = h * 33 + c from 5381, in
// 32 bits) over the name in upper case with its accents taken off. Names are UTF-8; the
// accented letters of Latin-1 fold to their base letter, anything else is hashed as it comes.
constexpr char cKllLettreDeBase(unsigned char byLatin1) {
    // U+00C0 to U+00FF; 0 where the character has no one base letter.
    constexpr char kszBase[] = "AAAAAA\0CEEEEIIII\0NOOOOO\0OUUUUY\0\0"
                               "AAAAAA\0CEEEEIIII\0NOOOOO\0OUUUUY\0Y";
    return byLatin1 >= 0xC0 ? kszBase[byLatin1 - 0xC0] : 0;
}

constexpr uint32_t nKllHashNom(const char* pszNom) {
    uint32_t h = 5381;
    for (const char* p = pszNom; *p; ++p) {
        auto by = static_cast<unsigned char>(*p);
        if (by >= 'a' && by <= 'z') {
            by = static_cast<unsigned char>(by - 'a' + 'A');
        } else if (by == 0xC3 && p[1]) {
            char cBase = cKllLettreDeBase(static_cast<unsigned char>(0xC0 + (p[1] & 0x3F)));
            if (cBase) {
                by = static_cast<unsigned char>(cBase);
                ++p;
            }
        }
        h = h * 33 + by;
    }
    return h;
}
static_assert(nKllHashNom("Email") == 0x0D0AF24D && nKllHashNom("MotDePasse") == 0xFE150EFA);
static_assert(nKllHashNom("Evenement") == 0x3035486C && nKllHashNom("DATEDEBUT") == 0xC7E6FB37);
static_assert(nKllHashNom("Evénement") == nKllHashNom("EVENEMENT"), "accents fold away");
