"""What the end-to-end tests share: samples, servers, the console host and an independent reader."""
