"""What the end-to-end tests share. Nothing in here is taken from the daemon's or the tool's sources."""
