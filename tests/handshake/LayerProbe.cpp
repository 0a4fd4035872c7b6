// Compiled, not run: a header seen from one layer's view of the component. The tests of this
// file check that a lower layer cannot include a higher one, nor a connector another.
#include KVGGL_PROBE_HEADER
