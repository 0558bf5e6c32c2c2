#include "X11Connection.h"

X11Connection::X11Connection(const char* displayName)
{
    int screenNumber = 0;
    m_connection.reset(xcb_connect(displayName, &screenNumber));
    if (!isOpen())
        return;
    xcb_screen_iterator_t it = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get()));
    for (int i = 0; it.rem > 0 && i < screenNumber; ++i)
        xcb_screen_next(&it);
    m_screen = it.data;
    m_root = m_screen ? m_screen->root : XCB_NONE;
}

xcb_atom_t X11Connection::atom(const QByteArray& name)
{
    const auto known = m_atoms.constFind(name);
    if (known != m_atoms.constEnd())
        return *known;
    const auto cookie = xcb_intern_atom(get(), 0, static_cast<uint16_t>(name.size()), name.constData());
    XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(get(), cookie, nullptr));
    const xcb_atom_t value = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    m_atoms.insert(name, value);
    return value;
}
