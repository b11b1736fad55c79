#pragma once

/// What the process needs before and after its application object is made, on the main thread.
namespace Startup {
/// The program's name and version and how its texts are encoded. Before the command line is read;
/// beforeApplication() does it, too.
void beforeCommandLine();
/// Points the temporary directory at one that only this user can enter, fixes the layout's 72 dots per inch,
/// unless the user set a font resolution of their own, and takes the desktop's scale. Before the application
/// object.
void beforeApplication();
/// Fonts, colours, the text cursor and the log. After the application object.
void afterApplication();
/// Takes the private temporary directory away with all that is in it. After the application object, when no
/// thread writes files any more.
void removeTemporaryFiles();
} // namespace Startup
