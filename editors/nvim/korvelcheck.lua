-- Starts the language server of korvelcheck for schema files and project files, in Neovim 0.7 and later.
local client -- the id of the running server's client, or nil
-- `on_exit` instead of `client_is_stopped`, which in Neovim 0.7 is also true while a client starts.
local config = { name = 'korvelcheck', cmd = { 'korvelcheck', 'lsp' }, on_exit = function() client = nil end }

vim.api.nvim_create_autocmd({ 'BufReadPost', 'BufWritePost' }, {
  pattern = { '*.xml', 'korvelcheck.toml' },
  callback = function(event)
    if event.match:match('%.xml$') and vim.fn.search('<metalib\\>', 'cnw') == 0 then return end
    client = client or vim.lsp.start_client(config)
    vim.lsp.buf_attach_client(event.buf, client)
    vim.bo[event.buf].omnifunc = 'v:lua.vim.lsp.omnifunc'
  end,
})

-- Shows the summary of each table, a code lens, when the server has checked the file. Neovim 0.7 does not request code lenses by
-- itself, and requests no more of them if one request was made before the server was initialized.
vim.api.nvim_create_autocmd('DiagnosticChanged', {
  pattern = '*.xml',
  callback = function(event)
    local server = client and vim.lsp.get_client_by_id(client)
    if not server or not server.initialized then return end
    for _, buffer in ipairs(vim.api.nvim_list_bufs()) do
      if vim.api.nvim_buf_get_name(buffer) == event.match and vim.lsp.buf_is_attached(buffer, client) then
        vim.api.nvim_buf_call(buffer, function() vim.lsp.codelens.refresh({ bufnr = 0 }) end)
      end
    end
  end,
})
