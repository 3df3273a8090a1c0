#pragma once

/// Shows the about box and waits until it is closed.
void showAbout();
