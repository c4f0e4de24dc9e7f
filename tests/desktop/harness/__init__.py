"""A desktop with sound for machines that have none, and the means to use the program on it.

Everything is private and temporary: the screen, the message bus, the sound server, the home
directory. Nothing of the person whose machine it is gets read or written, and every process that is
started here ends with the desktop, also when the script is interrupted. Several desktops can run on
one machine at the same time. Written for Debian's own Python, /usr/bin/python3.
"""
