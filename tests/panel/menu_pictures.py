"""What a user of the menu-bar program sees, as pictures of a private session."""

from panel_session import HEIGHT, PANEL_HEIGHT, WIDTH

SUBMENU_ROW, ABOUT_ROW = 1, 4  # of the idle menu


def _move_pointer_away(session):
    """On the item it would bring up a tooltip, which hides things and ticks."""
    session.user("mousemove", 0, HEIGHT - 1)
    session.settle()


def open_menu(session):
    session.click_item()
    _move_pointer_away(session)


def launch(session, program):
    running = session.start(program.resolve(), "--demo")
    session.wait_until(session.item, "the status item")
    session.settle()
    return running


def idle_menu(session, picture):
    open_menu(session)
    session.screenshot(picture)
    session.user("key", "Escape")
    session.settle()


def sources(session, picture):
    open_menu(session)
    session.user("mousemove", WIDTH - 200, PANEL_HEIGHT + 16 + 26 * SUBMENU_ROW)
    session.settle()
    session.screenshot(picture)
    session.user("key", "Escape", "Escape")
    session.settle()


def about(session, picture):
    open_menu(session)
    session.choose_row(ABOUT_ROW)
    # No window manager gives it the keyboard.
    session.user("search", "--sync", "--onlyvisible", "--name", "^Audrel$", "windowfocus", "--sync")
    _move_pointer_away(session)
    session.screenshot(picture)
    session.user("key", "Escape")
    session.settle()


def start_recording(session):
    open_menu(session)
    session.choose_row(0)


def recording_menu(session, picture):
    """Three seconds into a recording."""
    start_recording(session)
    session.wait_until(lambda: "00:03" in session.item_property("ToolTip"), "three seconds")
    open_menu(session)
    session.screenshot(picture)
    session.user("key", "Escape")
