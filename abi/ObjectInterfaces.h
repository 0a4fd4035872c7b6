// The object interfaces of the host: the root of every counted object that crosses the
// boundary. Slot order is binding: the host and the component call these through the vtable.
#pragma once

class IInterfaceObjetBase {
public:
    virtual void vAddRef() = 0;
    virtual void vRelease() = 0;
    virtual IInterfaceObjetBase* vpiGetObjetBase() { return nullptr; }
    virtual int vbDisponible() { return 1; }
    virtual void m32EmptyMethodIInterfaceObjetBase() {}
    virtual void m33EmptyMethodIInterfaceObjetBase() {}

protected:
    ~IInterfaceObjetBase() = default;
};
