// CLuaJSON: kvggl.json, so that a script reads a raw reply as tables and writes tables as JSON.
//   kvggl.json.decode(text)  the value of a JSON text: objects and arrays as tables, null as
//                            kvggl.json.null; nil and an error table when the text is not JSON
//   kvggl.json.encode(value) JSON text, members in name order; a table whose keys are exactly
//                            1..n (n > 0) is an array, any other table an object (so {} is an
//                            object); dates as their text; raises on what JSON cannot hold
// Decoding goes through the host's JSON service, the parser the component itself is served by,
// so a script reads an answer as the component would.
#pragma once

class CHost;
struct lua_State;

class CLuaJSON {
public:
    static constexpr int knMaxDepth = 200;

    // Pushes the json table.
    static void s_Push(lua_State* L, CHost* pclHost);
};
